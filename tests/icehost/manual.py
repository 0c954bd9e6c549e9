#!/usr/bin/python3 -B
"""Compares the manual page and the completions of three shells with the help of icehost."""
import os
import re
import sys

import pexpect

sys.path.append(sys.path[0] + "/..")
from lib import FOLDER, ICEHOST, SOURCE, expect, failures, output, run_checks, write

PAGE = ICEHOST + ".1"
os.environ.update(XDG_RUNTIME_DIR=FOLDER.name, TERM="dumb", LC_ALL="C.UTF-8")


def options_in(text):
    """Returns the names of each option in a help text, with the form of its value."""
    options = {}
    for names, value, told in re.findall(r"^  (-\S+)(?: (\S+))?(.*)$", text, re.M):
        options[tuple(names.split(","))] = "=[FILE]" if f" {names}=FILE" in told else value
    return options


HELP = output(ICEHOST, "help")
VERBS = re.findall(r"^  (\w+) ", HELP.partition("Verbs:")[2], re.M)
VERB_HELP = {verb: output(ICEHOST, "help", verb) for verb in VERBS}
GLOBAL = options_in(HELP)
OPTIONS = {verb: options_in(text) for verb, text in VERB_HELP.items()}
PROBE_HELP = {verb: " ".join(found[1].split()) for verb, text in VERB_HELP.items()
              if (found := re.search(r"--probe PROBE (.*?)\n  -", text, re.S))}
PROBES = re.split(", | or ", PROBE_HELP["run"].replace(" (the default)", ""))


def heads_of(options):
    forms = {"": "", "=[FILE]": "[=file]"}
    return sorted(", ".join(names) + forms.get(value, " " + value.lower())
                  for names, value in options.items())


def check_page():
    page = re.sub(".\b", "", output("mandoc", "-T", "ascii", "-O", "width=78", PAGE))
    parts = re.split(r"^ {0,3}(\S.*)\n", page, flags=re.M)
    sections = dict(zip(parts[1::2], parts[2::2]))
    heads = {name: re.findall(r"^     (\S.*)$", text, re.M) for name, text in sections.items()}
    # If the name of an option is short, its text begins on the same line.
    options = {name: sorted(head.split("  ")[0] for head in lines if head[0] == "-")
               for name, lines in heads.items()}
    expect("global options", options["DESCRIPTION"], heads_of(GLOBAL))
    expect("verbs", [name for name in sections if name.islower()], VERBS)
    for verb, all_options in OPTIONS.items():
        own = {names: value for names, value in all_options.items() if names not in GLOBAL}
        expect(f"options of {verb}", options[verb], heads_of(own))
    usages = re.findall("usage: (.*)", "".join(VERB_HELP.values()).lower().replace("...", " ..."))
    expect("synopsis", heads["SYNOPSIS"][:-2], usages)
    expect("probes", [head.split()[0] for head in heads["PROBES"]][:len(PROBES)],
           [probe.lower() for probe in PROBES])
    defaults = re.findall(r"\(default (\w+)\)", "".join(VERB_HELP.values()))
    expect("defaults", set(re.findall(r"default\s+is\s+(\d\w*)\.", page)), set(defaults))
    expect("statuses", [head.split()[0] for head in heads["EXIT STATUS"]],
         re.findall(r"(?:status:|;) (\d+) ", HELP))
    expect("version", "icehost " + re.findall(r"icescript (\d\S+)", page)[-1] + "\n",
         output(ICEHOST, "--version"))
    # The pages that this page refers to need not be installed.
    lint = output("mandoc", "-T", "lint", "-W", "style", PAGE).splitlines()
    expect("mandoc", [line for line in lint if not re.search("manual not found|mandoc.db", line)], [])
    expect("groff", output("groff", "-mdoc", "-Tutf8", "-ww", "-z", PAGE), "")
    for script in re.findall(r"(?:^ {11}.*\n)+", sections["SCRIPTS"], re.M):
        expect("SCRIPTS", output(ICEHOST, "run", "-q", "--strict", "-", given=script), "")
    examples = "\n".join(re.findall(r"^ +\$ (icehost (?!.*(?:localhost|unix)).*)$", page, re.M))
    told = output("bash", "-exc", examples.replace("/usr/share/doc/icescript", SOURCE))
    if "Script End." not in told or "again.ini" not in os.listdir():
        failures.append(f"the commands in EXAMPLES failed: {told}")


# Each shell runs in a terminal and has a function `icehost` that prints its arguments. In bash and
# zsh, a key inserts all completions. In fish, a command prints them.
ALL = "\x18a"
PRINT_WORDS = "icehost() { printf '<%s>' \"$@\"; echo E''ND; }; PS1='RE''ADY '; icehost"
SHELLS = {
    "bash": ("bash --norc --noprofile -i", f"""
        bind 'set bell-style none'; bind 'set enable-bracketed-paste off'
        bind '"\\C-xa": insert-completions'
        source '{SOURCE}/host/completions/icehost.bash'; {PRINT_WORDS}"""),
    "zsh": ("zsh -f -i", f"""
        fpath=('{SOURCE}/host/completions' $fpath); autoload -U compinit; compinit -u -D
        zle -C all complete-word _generic; bindkey '^Xa' all; unsetopt beep
        zstyle ':completion:all:*' completer _all_matches _complete
        zstyle ':completion:all:*' insert yes; {PRINT_WORDS}"""),
    "fish": ("fish --no-config -i", f"""
        function fish_prompt; echo -n RE; echo -n 'ADY '; end
        function icehost; printf '<%s>' $argv; echo E''ND; end
        source '{SOURCE}/host/completions/icehost.fish'; icehost"""),
}
FILES = {"two words.ini", "folder"}
KINDS = {"jtag", "gpio"}
VALUES = {"MODE": {"jtag5", "2wire", "cjtag2"}, "KIND": KINDS, "[KIND]": KINDS, "FILE": FILES,
          "COMMAND": FILES, "PROTOCOL": {"remote-bitbang", "xvc"}, "MIB": set(), "SECONDS": set(),
          "N": set(), "HEX": set(), "IR:BITS[=HEX]": set(), "BITS,...": set()}
OPERANDS = {"run": FILES, "check": FILES, "import": FILES, "serve": {"tcp:", "unix:"},
            "help": set(VERBS)}
OFFERED = {
    "": {*VERBS, "help"}, "-": {name for names in GLOBAL for name in names},
    **{f"-q {verb} ": operands for verb, operands in OPERANDS.items()},
    "run --strict tw": {"two words.ini"}, "nope ": set(), "run -- -": set(), "serve tcp:": set(),
    "run --probe remote-bitbang:h": set(),
}
for verb, options in OPTIONS.items():
    OFFERED[f"{verb} -"] = {name for names in options for name in names}
    for name, value in ((name, value) for names, value in options.items() for name in names):
        if value == "=[FILE]":
            OFFERED[f"{verb} {name} "] = OPERANDS[verb]
        elif value == "PROBE":
            OFFERED[f"{verb} -q {name} "] = {re.sub("[A-Z].*", "", probe) for probe in PROBES
                                             if probe in PROBE_HELP[verb]}
        elif value:
            OFFERED[f"{verb} -q {name} "] = VALUES[value]
# The typed keys (a tab completes a word), and the words of the resulting line.
TYPED = {
    "run tw\t": ["run", "two words.ini"],
    "run 'tw\t": ["run", "two words.ini"],
    "check two\\ w\t": ["check", "two words.ini"],
    "-q help ru\t": ["-q", "help", "run"],
    "run --keep\t--probe si\tfo\t": ["run", "--keep-going", "--probe", "sim", "folder"],
    "run --probe open\thost:1 tw\t": ["run", "--probe", "openocd:host:1", "two words.ini"],
    "run --probe=rem\thost:1": ["run", "--probe=remote-bitbang:host:1"],
    "detect --probe rem\tun\ttw\t": ["detect", "--probe", "remote-bitbang:unix:two words.ini"],
    "run --probe=rem\tun\tfo\tin\t": ["run", "--probe=remote-bitbang:unix:folder/inner.ini"],
    "serve un\tfo\tin\t": ["serve", "unix:folder/inner.ini"],
    "serve --tra\t=tw\ttc\t1": ["serve", "--trace=two words.ini", "tcp:1"],
    "run --tra\t=fo\tin\t": ["run", "--trace=folder/inner.ini"],
    "run --vcd=fo\tin\ttw\t": ["run", "--vcd=folder/inner.ini", "two words.ini"],
    "import --output=tw\t": ["import", "--output=two words.ini"],
    "run --wire=cj\t": ["run", "--wire=cjtag2"],
}


def check_shell(name):
    command, setup = SHELLS[name]
    shell = pexpect.spawn(command, dimensions=(50, 4000), encoding="utf-8", timeout=60)
    shell.delaybeforesend = None

    def words_of(keys):
        shell.send(keys + "\r")
        shell.expect("(<[^\r\n]*>)END")
        words = shell.match[1][1:-1].split("><")
        shell.expect("READY ")
        return [re.sub("[=/]$", "", word) for word in words]

    words_of("; ".join(line.strip() for line in setup.strip().splitlines()))
    for beginning, wanted in OFFERED.items():
        before, _, begun = beginning.rpartition(" ")
        if name == "fish":
            told = f"complete -C 'icehost {beginning}' | string split -f 1 \\t"
            offered = words_of(f"icehost ({told})")
        else:
            offered = words_of(f"icehost {beginning}{ALL}")[len(before.split()):]
        expect(f"{name} after {beginning!r}", set(offered) - {"", begun}, wanted)
    for keys, wanted in TYPED.items():
        expect(f"{name}, typed {keys!r}", words_of(f"icehost {keys}"), wanted)
    shell.close(force=True)


def check_shells():
    write("shells/two words.ini", "")
    write("shells/folder/inner.ini", "")
    os.chdir("shells")
    for name in SHELLS:
        check_shell(name)


run_checks(check_page, check_shells)
