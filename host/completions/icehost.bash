# Completion of icehost's command line for bash. Readline completes file names, because it knows how
# to quote them. Where a file name is not allowed, readline's completion is switched off.

# Sets `words` to the words before the cursor, as the shell splits them. COMP_WORDS is also split at
# ":" and "=".
_icehost_words() {
  local rest=${COMP_LINE:0:COMP_POINT} piece
  words=()
  for piece in "${COMP_WORDS[@]:0:COMP_CWORD+1}"; do
    if [[ $rest == [[:blank:]]* || ${#words[@]} -eq 0 ]]; then
      rest=${rest#"${rest%%[![:blank:]]*}"}
      words+=('')
    fi
    words[-1]+=${rest:0:${#piece}}
    rest=${rest:${#piece}}
  done
}

# Offers the texts that begin with `cur`, each after `option`. Readline replaces only the end of the
# word, `tail`.
_icehost_offer() {
  local kept=$option$cur text
  kept=${kept%"$tail"}
  compopt +o default
  for text; do
    [[ $text == "$cur"* ]] || continue
    text=$option$text
    COMPREPLY+=("${text#"$kept"}")
  done
  [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *[:=] ]] && compopt -o nospace
  return 0
}

# Offers values of an option. Fails if the option has no value.
_icehost_value() {
  case $1 in
    --json | --vcd | --svg | --html | --svf | --junit | --learn | --plugin | -o | --output | \
      --trace= | --spawn | --spawn-log) ;;
    --probe)
      [[ $cur == remote-bitbang:unix:* ]] && return
      local probes=(sim remote-bitbang: remote-bitbang:unix:)
      [[ $verb == serve ]] || probes+=(xvc: openocd:)
      _icehost_offer "${probes[@]}"
      ;;
    --wire) _icehost_offer jtag5 2wire cjtag2 ;;
    --script) _icehost_offer jtag gpio ;;
    --protocol) _icehost_offer remote-bitbang xvc ;;
    --size-limit | --timeout | --repeat | --ir-length | --idcode | --idcode-instruction \
      | --register | --idle-limit | --tck-hz | --chain | --tap) _icehost_offer ;;
    *) return 1 ;;
  esac
}

# Offers arguments that are not options.
_icehost_operand() {
  case $verb in
    run | check | import) ;;
    serve) [[ $cur == unix:* ]] || _icehost_offer tcp: unix: ;;
    help) _icehost_offer run check detect import serve ;;
    '') _icehost_offer run check detect import serve help ;;
    *) _icehost_offer ;;
  esac
}

_icehost() {
  local words option='' tail=$2 verb='' at=1 options='-h --help -q --quiet'
  local probe='--probe --timeout --spawn --spawn-log'
  probe+=' --chain --tap --ir-length --idcode --idcode-instruction --register'
  _icehost_words
  local cur=${words[-1]} last=$((${#words[@]} - 1))
  while ((at < last)) && [[ ${words[at]} == -* ]]; do ((++at)); done
  ((at == last)) || verb=${words[at]}
  case $verb in
    run)
      options+=" $probe --size-limit --strict --force --keep-going --repeat --summary"
      options+=' --plugin --wire --trace --trace= --json --vcd --svg --html --svf --junit --learn'
      ;;
    check) options+=' --size-limit --strict --json' ;;
    detect) options+=" $probe --script" ;;
    import) options+=' --script --tck-hz --size-limit --all -o --output' ;;
    serve)
      options+=" $probe --protocol -v --verbose --idle-limit --trace --trace= --json --vcd --html"
      ;;
    '') options+=' --version' ;;
    *) options='' ;;
  esac
  if [[ " ${words[*]:at:last-at} " == *' -- '* ]]; then
    _icehost_operand
  elif [[ $cur == --*=* ]]; then
    option=${cur%%=*}=
    cur=${cur#*=}
    _icehost_value "${option%=}" || _icehost_value "$option" || _icehost_offer
  elif [[ $cur == -* ]]; then
    _icehost_offer $options
  else
    _icehost_value "${words[-2]}" || _icehost_operand
  fi
}

complete -o default -F _icehost icehost
