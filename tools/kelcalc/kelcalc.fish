# fish completion for kelcalc

# The options, as --help tells them, each with the text behind it.
function __kelcalc_options
    kelcalc --help 2>/dev/null | string match -r '^  -.*' |
        string replace -r '^  (-[^ ,]+)(?:, (--\S+))?(?: [A-Z]+)? +(.*)' '$1\t$3\n$2\t$3' |
        string match -r '^-.*'
end

# What --explain takes: functions without their ";", which the shell would take for its own.
function __kelcalc_names
    kelcalc --list 2>/dev/null | string match -r '^  \S.*' | string replace -r '^  ;?(\S+) +(.*)' '$1\t$2'
end

function __kelcalc_behind
    string match -q -- "--$argv[1]" (commandline -opc)[-1]
end

complete -c kelcalc -n 'not __kelcalc_behind explain; and not __kelcalc_behind digits' \
    -k -a '(__fish_complete_suffix .3dc)'
complete -c kelcalc -n 'string match -q -- "-*" (commandline -ct)' -a '(__kelcalc_options)'
complete -c kelcalc -f -n '__kelcalc_behind digits' -a '(seq 17)'
complete -c kelcalc -f -n '__kelcalc_behind explain' -a '(__kelcalc_names)'
