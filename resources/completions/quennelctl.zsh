#compdef quennelctl
# Completion of quennelctl for zsh.

_quennelctl_templates() {
  local -a templates
  local index enabled title rest
  while IFS=$'\t' read -r index enabled title rest; do
    templates+=("$index:$title")
  done < <(_call_program templates quennelctl template list --plain 2>/dev/null)
  _describe -V template templates
}

_quennelctl_grants() {
  local -a grants
  local grant rest
  while IFS=$'\t' read -r grant rest; do
    grants+=("$grant")
  done < <(_call_program grants quennelctl grants --plain 2>/dev/null)
  compadd -V grant -a grants
}

_quennelctl_switches() {
  local -a switches=(
    'skipFilename:make the file at once'
    'showFileOnCreation:select the new file in the file manager'
    'playSound:play a sound'
    'openFileOnCreation:open the new file'
    'runInBackground:the helper does not leave by itself'
  )
  _describe setting switches
}

_quennelctl_template() {
  local -a commands=(
    'list:show the templates'
    'add:add a template'
    'edit:change a template'
    'remove:remove a template'
    'move:put a template in another place'
  )
  local -a record=(
    '--title=[its name in menus]:title'
    '--prefix=[the name of the new files, without the extension]:prefix'
    '--suffix=[their extension]:suffix'
    '--file=[the file or folder to copy]:file:_files'
    '(--no-executable)--executable[the new files can be run]'
    '(--executable)--no-executable[they cannot]'
    '(--disabled)--enabled[menus offer the template]'
    '(--enabled)--disabled[they do not]'
    '(--no-shortcut)--shortcut=[keys that make a file in the folder in front]:keys'
    '(--shortcut)--no-shortcut[no such keys]'
    '--help[say more about the command]'
  )
  if ((CURRENT == 2)); then
    _describe command commands
    return
  fi
  local command=$words[2]
  shift words
  ((CURRENT--))
  case $command in
    list) _arguments '--plain[one template a line, for scripts]' '--help[say more]' ;;
    add) _arguments $record '1:file:_files' ;;
    edit) _arguments $record '1:template:_quennelctl_templates' ;;
    remove) _arguments '1:template:_quennelctl_templates' ;;
    move) _arguments '1:from:_quennelctl_templates' '2:to:_quennelctl_templates' ;;
  esac
}

_quennelctl() {
  local -a commands=(
    'template:keep the templates'
    'shortcuts:show the keyboard shortcuts'
    'set:turn a setting on or off'
    'get:print a setting'
    'grant:let the helper write in a folder'
    'grants:show where the helper may write'
    'revoke:withdraw what was granted'
    'new:make a file from a template'
    'notify:send the helper a command'
  )
  if ((CURRENT == 2)); then
    _describe command commands
    _arguments '--help[say what there is]' '--version[say which version this is]'
    return
  fi
  shift words
  ((CURRENT--))
  case $words[1] in
    template) _quennelctl_template ;;
    set) _arguments '1:setting:_quennelctl_switches' '2:value:(yes no)' ;;
    get) _arguments '1:setting:_quennelctl_switches' ;;
    grant) _arguments '1:folder:_files -/' ;;
    shortcuts) _arguments '--plain[one shortcut a line, for scripts]' '--help[say more]' ;;
    grants) _arguments '--plain[one folder a line, for scripts]' '--help[say more]' ;;
    revoke) _arguments '1:folder:_quennelctl_grants' ;;
    new) _arguments '1:template:_quennelctl_templates' '2:folder:_files -/' ;;
    notify) _arguments '1:command:(quit fileTemplates)' ;;
  esac
}

_quennelctl "$@"
