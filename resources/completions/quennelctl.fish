# Completion of quennelctl for fish.

function __quennelctl_words
    set -l words (commandline --tokenize --current-process --cut-at-cursor)
    string match --invert -- '-*' $words[2..]
end

# Whether the words so far are the command alone, or the command and as many arguments.
function __quennelctl_at --argument-names command arguments
    set -l words (__quennelctl_words)
    set -l name (string split ' ' -- $command)
    test "$words[1..$(count $name)]" = "$command"
    and test (math (count $words) - (count $name)) -eq $arguments
end

function __quennelctl_in --argument-names command
    set -l name (string split ' ' -- $command)
    set -l words (__quennelctl_words)
    test "$words[1..$(count $name)]" = "$command"
end

function __quennelctl_templates
    quennelctl template list --plain 2>/dev/null | string replace --regex '^(\d+)\t[^\t]*\t([^\t]*).*' '$1\t$2'
end

function __quennelctl_grants
    quennelctl grants --plain 2>/dev/null | string replace --regex '\t.*' ''
end

function __quennelctl_switches
    printf '%s\t%s\n' \
        skipFilename 'make the file at once' \
        showFileOnCreation 'select the new file in the file manager' \
        playSound 'play a sound' \
        openFileOnCreation 'open the new file' \
        runInBackground 'the helper does not leave by itself'
end

complete -c quennelctl -f
complete -c quennelctl -l help -s h -d 'say more'
complete -c quennelctl -n 'test (count (__quennelctl_words)) -eq 0' -l version -d 'say which version this is'

set -l one 'test (count (__quennelctl_words)) -eq 0'
complete -c quennelctl -n $one -a template -d 'keep the templates'
complete -c quennelctl -n $one -a shortcuts -d 'show the keyboard shortcuts'
complete -c quennelctl -n $one -a set -d 'turn a setting on or off'
complete -c quennelctl -n $one -a get -d 'print a setting'
complete -c quennelctl -n $one -a grant -d 'let the helper write in a folder'
complete -c quennelctl -n $one -a grants -d 'show where the helper may write'
complete -c quennelctl -n $one -a revoke -d 'withdraw what was granted'
complete -c quennelctl -n $one -a new -d 'make a file from a template'
complete -c quennelctl -n $one -a notify -d 'send the helper a command'

set -l two '__quennelctl_at template 0'
complete -c quennelctl -n $two -a list -d 'show the templates'
complete -c quennelctl -n $two -a add -d 'add a template'
complete -c quennelctl -n $two -a edit -d 'change a template'
complete -c quennelctl -n $two -a remove -d 'remove a template'
complete -c quennelctl -n $two -a move -d 'put a template in another place'

for command in 'template list' shortcuts grants
    complete -c quennelctl -n "__quennelctl_in '$command'" -l plain -d 'one a line, for scripts'
end
for command in 'template add' 'template edit'
    set -l record "__quennelctl_in '$command'"
    complete -c quennelctl -n $record -l title -x -d 'its name in menus'
    complete -c quennelctl -n $record -l prefix -x -d 'the name of the new files, without the extension'
    complete -c quennelctl -n $record -l suffix -x -d 'their extension'
    complete -c quennelctl -n $record -l file -r -F -d 'the file or folder to copy'
    complete -c quennelctl -n $record -l executable -d 'the new files can be run'
    complete -c quennelctl -n $record -l no-executable -d 'they cannot'
    complete -c quennelctl -n $record -l enabled -d 'menus offer the template'
    complete -c quennelctl -n $record -l disabled -d 'they do not'
    complete -c quennelctl -n $record -l shortcut -x -d 'keys that make a file in the folder in front'
    complete -c quennelctl -n $record -l no-shortcut -d 'no such keys'
end

complete -c quennelctl -n "__quennelctl_at 'template add' 0" -F
for command in 'template edit' 'template remove' 'template move' new
    complete -c quennelctl -n "__quennelctl_at '$command' 0" -k -a '(__quennelctl_templates)'
end
complete -c quennelctl -n "__quennelctl_at 'template move' 1" -k -a '(__quennelctl_templates)'
complete -c quennelctl -n '__quennelctl_at set 0; or __quennelctl_at get 0' -k -a '(__quennelctl_switches)'
complete -c quennelctl -n '__quennelctl_at set 1' -k -a 'yes no'
complete -c quennelctl -n '__quennelctl_at get 0' -a 'fileTemplates authorizedDirs localizedStrings'
complete -c quennelctl -n '__quennelctl_at grant 0; or __quennelctl_at new 1' -a '(__fish_complete_directories)'
complete -c quennelctl -n '__quennelctl_at revoke 0' -k -a '(__quennelctl_grants)'
complete -c quennelctl -n '__quennelctl_at notify 0' -a 'quit fileTemplates'
