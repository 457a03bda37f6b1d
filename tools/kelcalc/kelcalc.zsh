#compdef kelcalc

# What --explain takes, each with what is told of it: "sqrt:square root".
_kelcalc_names() {
  local -a names
  names=("${(@f)$($command --list 2>/dev/null | sed -n 's/^  ;\{0,1\}\([^ ]\{1,\}\) *\(.*\)/\1	\2/p' |
    sed 's/\([\\:]\)/\\\1/g; s/	/:/')}")
  _describe -t names 'operator, function or type' names
}

# The options, as --help tells them: "-h" and "--help" with the text behind them.
_kelcalc_options() {
  local -a options
  options=("${(@f)$($command --help 2>/dev/null |
    sed -n 's/^  \(-[^ ,]\{1,\}\)\(, \(--[^ ]*\)\)\{0,1\}\( [A-Z]\{1,\}\)\{0,1\}  *\(.*\)/\1:\5\n\3:\5/p' |
    sed '/^:/d')}")
  _describe -o -t options 'option' options
}

_kelcalc() {
  local command=$words[1]
  case $words[CURRENT-1] in
    -e) _message 'program' ;;
    --digits) compadd {1..17} ;;
    --json) _files ;;
    --explain) _kelcalc_names ;;
    *)
      if [[ $words[CURRENT] == -* ]]; then
        _kelcalc_options
      else
        _files -g '*.3dc'
      fi
      ;;
  esac
}

_kelcalc "$@"
