# Completion of quennelctl for bash.

_quennelctl_templates() {
  "$1" template list --plain 2>/dev/null | cut -f 1
}

_quennelctl_grants() {
  "$1" grants --plain 2>/dev/null | cut -f 1
}

_quennelctl() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local switches="skipFilename showFileOnCreation playSound openFileOnCreation runInBackground"
  local record="--title --prefix --suffix --file --executable --no-executable --enabled --disabled
    --shortcut --no-shortcut"
  local command=${COMP_WORDS[1]} words=
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    words="template shortcuts set get grant grants revoke new notify --help --version"
  else
    case $command in
      template)
        if ((COMP_CWORD == 2)); then
          words="list add edit remove move --help"
        else
          case ${COMP_WORDS[2]}:$previous in
            *:--file)
              mapfile -t COMPREPLY < <(compgen -f -- "$current")
              compopt -o filenames
              return
              ;;
            *:--title | *:--prefix | *:--suffix | *:--shortcut) return ;;
            list:*) words="--plain --help" ;;
            add:*)
              words="$record --help"
              if [[ $current != -* ]]; then
                mapfile -t COMPREPLY < <(compgen -f -- "$current")
                compopt -o filenames
                return
              fi
              ;;
            edit:*)
              words="$record --help"
              ((COMP_CWORD > 3)) || [[ $current = -* ]] || words=$(_quennelctl_templates "${COMP_WORDS[0]}")
              ;;
            remove:* | move:*)
              ((COMP_CWORD > 3)) && [[ ${COMP_WORDS[2]} = remove ]] ||
                words=$(_quennelctl_templates "${COMP_WORDS[0]}")
              ;;
          esac
        fi
        ;;
      set)
        case $COMP_CWORD in
          2) words=$switches ;;
          3) words="yes no" ;;
        esac
        ;;
      get) ((COMP_CWORD > 2)) || words="$switches fileTemplates authorizedDirs localizedStrings" ;;
      grant)
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
        compopt -o filenames
        return
        ;;
      grants | shortcuts) words="--plain --help" ;;
      revoke)
        local IFS=$'\n'
        mapfile -t COMPREPLY < <(compgen -W "$(_quennelctl_grants "${COMP_WORDS[0]}")" -- "$current")
        compopt -o filenames
        return
        ;;
      new)
        if ((COMP_CWORD == 2)); then
          words=$(_quennelctl_templates "${COMP_WORDS[0]}")
        elif ((COMP_CWORD == 3)); then
          mapfile -t COMPREPLY < <(compgen -d -- "$current")
          compopt -o filenames
          return
        fi
        ;;
      notify) ((COMP_CWORD > 2)) || words="quit fileTemplates" ;;
    esac
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _quennelctl quennelctl
