# Completion of mxf-quorvan-cli for bash.

_mxf_quorvan_cli() {
  local current=$2 previous=$3 command=${COMP_WORDS[1]} options
  if [[ $COMP_CWORD -eq 1 ]]; then
    mapfile -t COMPREPLY < <(compgen -W 'info rewrap verify export loudness conform --help --version --language' -- "$current")
    return
  fi
  case $previous in
    --method)
      mapfile -t COMPREPLY < <(compgen -W 'mapped file' -- "$current")
      return
      ;;
    --language)
      mapfile -t COMPREPLY < <(compgen -W 'ja en' -- "$current")
      return
      ;;
    --folder)
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
    --in | --out | --tracks | --silence | --prefix | --buffer) return ;;
  esac
  if [[ $current == -* ]]; then
    options=$(mxf-quorvan-cli "$command" --help 2>/dev/null | grep -oE -- '--[a-z][a-z-]*' | sort -u)
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    return
  fi
  mapfile -t COMPREPLY < <(compgen -f -- "${current#*=}")
}
complete -o filenames -F _mxf_quorvan_cli mxf-quorvan-cli
