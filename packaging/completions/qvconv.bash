# Completes qvconv in bash. Installed where bash-completion looks; it needs nothing of it.

# The numbers and the preferred names of the encodings.
_qvconv_encodings() {
  qvconv -l 2>/dev/null | awk '$1 ~ /^[0-9]+$/ { print $1; print $2 }'
}

# What may follow an option, on lines; nothing where it takes a file or anything else.
_qvconv_values() {
  case $1 in
    -f | --from-code | --from)
      printf '%s\n' ansi oem auto
      _qvconv_encodings
      ;;
    -t | --to-code | --to)
      printf '%s\n' ansi oem utf-8-sig
      _qvconv_encodings
      ;;
    --reconvert-to | --info | --chart) _qvconv_encodings ;;
    --on-error | --on-malformed | --on-unmappable)
      printf '%s\n' stop drop substitute escape pass reconvert
      ;;
    --escape) printf '%s\n' c xml ;;
    --bom) printf '%s\n' remove keep add ;;
    --newline) printf '%s\n' keep lf crlf ;;
    --progress) printf '%s\n' auto always never ;;
  esac
}

_qvconv_options() {
  printf '%s\n' -f --from-code -t --to-code -o --output -c --on-error --on-malformed \
    --on-unmappable --best-fit --substitute --escape --reconvert-to --bom --newline \
    --visual-order --check --all --json --detect --fits -l --list --info --chart --in-place \
    --output-dir -r --recursive --glob --files-from -0 --null -j --jobs --progress -q --quiet \
    -v --verbose -h --help -V --version
}

_qvconv() {
  local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]}
  # "--bom=keep" comes as three words, the last of which may be missing.
  if [[ $word == = ]]; then
    word=
  elif [[ $option == = ]]; then
    option=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
  local choices
  choices=$(_qvconv_values "$option")
  if [[ -z $choices && $word == -* ]]; then
    choices=$(_qvconv_options)
  fi
  local choice
  while read -r choice; do
    [[ -n $choice && $choice == "$word"* ]] && COMPREPLY+=("$choice")
  done <<<"$choices"
}

complete -o bashdefault -o default -F _qvconv qvconv
