#!/usr/bin/env bash
# usage: check-completions.sh CMAKE BUILD_DIRECTORY
# bash, zsh and fish load the completion by themselves after either installation, and it offers every
# command and every option of --help.
set -eu
cmake=$1 build=$2
for tool in fish zsh; do
  command -v "$tool" >/dev/null || { echo "skipped: no $tool"; exit 77; }
done
loader=/usr/share/bash-completion/bash_completion
[ -f "$loader" ] || { echo "skipped: no bash-completion"; exit 77; }
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
export HOME=$stage/home
data=$HOME/.local/share
mkdir -p "$HOME"
"$cmake" --install "$build" --prefix "$HOME/.local" >/dev/null
DESTDIR=$stage/root "$cmake" --install "$build" --prefix /usr >/dev/null
export PATH=$HOME/.local/bin:$PATH LC_ALL=C.UTF-8 LANGUAGE=en
fail() { echo "$1"; exit 1; }

# What is typed so far, as arguments; what is offered for its last word, one a line.
in_bash() {
  # shellcheck disable=SC2016 # for the bash that is started
  XDG_DATA_DIRS=$1/share bash --norc -c 'loader=$1; shift
    source "$loader"
    _completion_loader quennelctl || [ $? = 124 ] || exit
    complete -p quennelctl >/dev/null || exit
    compopt() { :; }
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
    _quennelctl
    printf "%s\n" "${COMPREPLY[@]}"' bash "$loader" "${@:2}"
}
in_fish() {
  # shellcheck disable=SC2016 # for fish
  XDG_DATA_DIRS=$1/share:/usr/share fish -c 'complete -C "$argv"' "${*:2}" | cut -f 1
}
in_zsh() {
  zsh -fc "fpath=($1 \$fpath); autoload -U compinit && compinit -D -u && print \${_comps[quennelctl]}"
}

for prefix in "$HOME/.local" "$stage/root/usr"; do
  in_bash "$prefix" quennelctl rev | grep -qx revoke || fail "bash loads no completion from $prefix"
  in_fish "$prefix" quennelctl rev | grep -qx revoke || fail "fish loads no completion from $prefix"
done
in_fish /nowhere quennelctl rev | grep -qx revoke || fail "fish loads no completion of its user's own"
rm -r "$data/fish"
if in_fish /nowhere quennelctl rev | grep -qx revoke; then fail "fish has a completion from elsewhere"; fi

in_zsh "$data/zsh/site-functions" | grep -qx _quennelctl || fail "zsh finds no completion in the home folder"
own=/usr/share/zsh/site-functions
[ ! -e /etc/debian_version ] || own=/usr/share/zsh/vendor-completions
zsh -fc 'print -l $fpath' | grep -qx "$own" || fail "zsh does not look in $own"
in_zsh "$stage/root$own" | grep -qx _quennelctl || fail "zsh finds no completion in $own"
functions=$stage/root$own/_quennelctl

fish=$stage/root/usr
offered() { in_bash "$HOME/.local" "$@" | grep -qxFe "${!#}" && in_fish "$fish" "$@" | grep -qxFe "${!#}"; }
quennelctl --help | awk -F '  +' '/^  [a-z]/ { print $2 }' | sed 's/ [^a-z].*//' >"$stage/commands"
[ -s "$stage/commands" ] || fail "--help lists no commands"
while read -ra command; do
  offered quennelctl "${command[@]}" || fail "bash or fish does not offer ${command[*]}"
  grep -qF "'${command[-1]}:" "$functions" || fail "zsh does not offer ${command[*]}"
  quennelctl "${command[@]}" --help | sed -n 's/^  \(--[a-z-]*\).*/\1/p' >"$stage/options"
  while read -r option; do
    offered quennelctl "${command[@]}" "$option" || fail "bash or fish does not offer ${command[*]} $option"
    grep -qFe "$option" "$functions" || fail "zsh does not offer ${command[*]} $option"
  done <"$stage/options"
done <"$stage/commands"
