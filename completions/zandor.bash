# Bash completion for zandor_gather and its companions. Installed under the name of each of them; without an
# installation: source completions/zandor.bash
#
# Options, checks and formats are taken from --help of the program whose command line is completed, so that
# they are those of the version at hand.

# The help without the descriptions: one option a line, with its values: "--only TEXT:{asymmetry,columns}".
_zandor_options() {
  [ ! -e --help ] || return  # zandor_gather would take it for a control file
  "$@" --help 2>/dev/null | sed -nE 's/^ {2}((-[a-z],)?--?[a-z].*)$/\1/p' | sed -E 's/ {2,}.*//'
}

# Names of zandor_export's formats.
_zandor_formats() {
  "$1" --help 2>/dev/null | sed -nE '/^Formats:/,/^$/s/^ {2}([a-z]+) .*/\1/p'
}

_zandor_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

# Control files and folders where there are any, other files otherwise.
_zandor_control_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -X '!*.inp' -- "$1"; compgen -d -- "$1")
  [ ${#COMPREPLY[@]} -gt 0 ] || _zandor_files "$1"
}

# What may follow an option: its values, files, or nothing that could be known.
_zandor_value() {
  local option=$1 values=$2 current=$3 done=
  case $option in
    -o | --output | --turn | --modes-of) _zandor_files "$current" ;;
    --only)
      case $current in *,*) done=${current%,*}, ;; esac
      compopt -o nospace 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -P "$done" -W "${values//,/ }" -- "${current##*,}")
      ;;
    *) mapfile -t COMPREPLY < <(compgen -W "${values//,/ }" -- "$current") ;;
  esac
}

_zandor() {
  local program=${1/#\~/$HOME} name=${1##*/} current=${COMP_WORDS[COMP_CWORD]}
  local previous=${COMP_WORDS[COMP_CWORD - 1]} command=() formats='' line word
  COMPREPLY=()
  # "--only=files" comes as three words.
  if [ "$current" = = ]; then
    current=
  elif [ "$previous" = = ]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  command=("$program")
  if [ "$name" = zandor_export ]; then
    formats=$(_zandor_formats "$program")
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
      if [[ $word != -* && $'\n'$formats$'\n' == *$'\n'"$word"$'\n'* ]]; then
        command+=("$word")
        formats=
        break
      fi
    done
  fi
  case $previous in
    --help | --version | -h) return ;;
    -*)
      while read -r line; do
        case ${line%% *} in "$previous" | *",$previous" | "$previous",*) ;; *) continue ;; esac
        # The word behind the option is the kind of its value, unless it tells of other options.
        word=${line#"${line%% *}"}
        word=${word# }
        if [[ $word =~ ^[A-Z]+ && $word != Excludes:* && $word != Needs:* ]]; then
          [[ $word =~ \{([^}]*)\} ]] && word=${BASH_REMATCH[1]} || word=
          _zandor_value "$previous" "$word" "$current"
          return
        fi
      done < <(_zandor_options "${command[@]}")
      ;;
  esac
  case $current in
    -*)
      mapfile -t COMPREPLY < <(compgen -W "$(_zandor_options "${command[@]}" |
        sed -E 's/ .*//; s/,/ /')" -- "$current")
      ;;
    *)
      if [ -n "$formats" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$formats" -- "$current")
      elif [ "$name" = zandor_probe ] || [ "$name" = zandor_displace ]; then
        _zandor_files "$current"
      else
        _zandor_control_files "$current"
      fi
      ;;
  esac
}

complete -F _zandor zandor_gather zandor_displace zandor_collect zandor_check zandor_ht zandor_export zandor_probe
