# Completion of icehost's command line for fish.

# Succeeds if the verb is one of these. `none` means that there is no verb yet.
function __icehost_in
    for word in (commandline -opc)[2..]
        string match -q -- '-*' $word; and continue
        contains -- $word $argv
        return
    end
    contains none $argv
end

# Offers paths after the prefix. Fails if the word under the cursor does not begin with it.
function __icehost_paths_behind -a prefix
    set -l word (string replace -r -- '^--\w+=' '' (commandline -ct))
    string match -q -- "$prefix*" $word; or return
    __fish_complete_path (string replace -- $prefix '' $word) | string replace -r '^' $prefix
    return 0
end

function __icehost_probes
    __icehost_paths_behind remote-bitbang:unix:; and return
    printf '%s\t%s\n' sim 'The simulated probe and target' \
        remote-bitbang: 'A remote_bitbang server, HOST:PORT' \
        remote-bitbang:unix: 'A remote_bitbang server, a socket file'
    __icehost_in serve; or printf '%s\t%s\n' xvc: 'An XVC server, HOST:PORT' \
        openocd: 'An adapter that OpenOCD drives, HOST:PORT[:TAP]'
end

function __icehost_endpoints
    __icehost_paths_behind unix:; and return
    printf '%s\t%s\n' tcp: 'PORT on the loopback address, or ADDRESS:PORT' unix: 'A socket file'
end

function __icehost_verbs
    printf '%s\t%s\n' run 'Run scripts in order and stop at the first that fails' \
        check 'Report every problem in scripts, without using a probe' \
        detect 'List the TAPs on a probe' \
        import 'Convert a Serial Vector Format (SVF) file to a script' \
        serve 'Serve a target over remote_bitbang or XVC until interrupted'
end

# Adds an option of these verbs: __icehost_option "VERB..." ARGUMENT...
function __icehost_option
    complete -c icehost -n "__icehost_in $argv[1]" $argv[2..]
end

complete -c icehost -f
__icehost_option 'none help' -a '(__icehost_verbs)'
__icehost_option none -a help -d 'Print the options of a verb'
__icehost_option none -l version -d 'Print the version and exit'
__icehost_option 'none run check detect import serve' -s h -l help -d 'Print the options and exit'
__icehost_option 'none run check detect import serve' -s q -l quiet -d 'Print errors only'
__icehost_option 'run check import' -F
__icehost_option 'run check import' -l size-limit -x -d 'Maximum size of a file in MiB (64)'

__icehost_option 'run detect serve' -l probe -x -a '(__icehost_probes)' -d 'The probe to use'
__icehost_option 'run detect serve' -l timeout -x -d 'Seconds to wait for answers (5)'
__icehost_option 'run detect serve' -l spawn -r -F -d "Start the probe's server with a command"
__icehost_option 'run detect serve' -l spawn-log -r -F -d 'Write the output of the --spawn command'
__icehost_option 'run detect serve' -l chain -x -d 'IR lengths of all TAPs'
__icehost_option 'run detect serve' -l tap -x -d 'The number of the TAP to address, from 1'
__icehost_option 'run detect serve' -l ir-length -x -d 'Length of the simulated IR, 2 to 32 (5)'
__icehost_option 'run detect serve' -l idcode -x -d 'Simulated IDCODE, hexadecimal (1ce51001)'
__icehost_option 'run detect serve' -l idcode-instruction -x -d 'The IDCODE instruction (1)'
__icehost_option 'run detect serve' -l register -x -d 'A simulated register, IR:BITS[=HEX]'
__icehost_option run -l wire -x -a 'jtag5 2wire cjtag2' -d 'The wire mode at the start'

__icehost_option 'run check' -l strict -d 'Treat warnings as failures'
__icehost_option run -l force -d 'Also run scripts with errors'
__icehost_option run -l keep-going -d 'Continue after a value that is not as expected'
__icehost_option run -l repeat -x -d 'How many times to run; 0: until interrupted'
__icehost_option run -l summary -d 'Print a summary at the end'
__icehost_option run -l plugin -r -F -d 'The plug-in to load'

__icehost_option 'run serve' -l trace -F -a - -d 'Trace every event'
__icehost_option 'run check serve' -l json -r -F -d 'Write JSON lines'
__icehost_option 'run serve' -l vcd -r -F -d 'Write the waveform'
__icehost_option run -l svg -r -F -d 'Write the waveform as a picture'
__icehost_option 'run serve' -l html -r -F -d 'Write a page for a browser'
__icehost_option run -l svf -r -F -d 'Write the operations in the Serial Vector Format'
__icehost_option run -l junit -r -F -d 'Write the results as JUnit XML'
__icehost_option run -l learn -r -F -d 'Write a copy of the script that expects the values read'

__icehost_option detect -l script -x -a 'jtag gpio' -d 'Write a script for the chain'
__icehost_option import -l script -x -a 'jtag gpio' -d 'The kind of script to write'
__icehost_option import -l tck-hz -x -d 'The highest TCK rate of the probe in Hz'
__icehost_option import -l all -d 'Report every problem, instead of grouping identical ones'
__icehost_option import -s o -l output -r -F -d 'Write the script to a file'

__icehost_option serve -a '(__icehost_endpoints)'
__icehost_option serve -l protocol -x -a 'remote-bitbang xvc' -d 'The protocol of the clients'
__icehost_option serve -s v -l verbose -d 'Report when clients connect and leave'
__icehost_option serve -l idle-limit -x -d 'Seconds that a client may be silent (60)'
