# Completion of "varnel ctl" for fish. Models are those of the server that ctl talks to.
function __varnel_words
    set -l words (commandline -opc)
    test "$words[2..]" = "$argv"
end

complete -c varnel -f
complete -c varnel -n '__varnel_words' -a ctl -d 'Use the command line'
complete -c varnel -n '__varnel_words ctl' -a tags -d 'List the models'
complete -c varnel -n '__varnel_words ctl' -a chat -d 'Send a prompt to a model'
complete -c varnel -n '__varnel_words ctl chat' -a '(timeout 3 varnel ctl tags 2>/dev/null)' -d Model
