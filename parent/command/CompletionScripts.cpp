// SPDX-License-Identifier: MIT
#include "parent/command/CommandLine.h"

namespace annivo {

const char* completionScript(const std::string& shell) {
  // Each asks the program itself, so that there is no second list of commands to keep. File names
  // are offered where the program takes them and nowhere else.
  if (shell == "bash") {
    return R"END(# source <(annivo completions bash)
_annivo() {
  local word quote= words=()
  case ${COMP_WORDS[COMP_CWORD]} in [\'\"]*) quote=yes ;; esac
  for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    word=${word#[\'\"]}
    word=${word%[\'\"]}
    words+=("${word//\\/}")
  done
  COMPREPLY=()
  while IFS= read -r word; do
    # Inside quotation marks a word stands as it is.
    [ -n "$quote" ] || word=$(printf %q "$word")
    COMPREPLY+=("$word")
  done < <(annivo __complete "${words[@]}" 2>/dev/null)
  case "${words[0]} ${words[1]}" in
    "import "* | "settings file") compopt -o default ;;
  esac
}
complete -F _annivo annivo
)END";
  }
  if (shell == "zsh") {
    return R"END(#compdef annivo
# source <(annivo completions zsh)
_annivo() {
  local -a found
  # All words that can stand here: compadd takes those that go on from what is typed.
  found=("${(@f)$(annivo __complete "${(@Q)words[2,CURRENT-1]}" "${(M)PREFIX#-}" 2>/dev/null)}")
  if [[ -n "${found[*]}" ]]; then
    compadd -- "${found[@]}"
  elif [[ "$words[2]" = import || "$words[2] $words[3]" = "settings file" ]]; then
    _files
  fi
}
if [[ "$funcstack[1]" = _annivo ]]; then _annivo "$@"; else compdef _annivo annivo; fi
)END";
  }
  return R"END(# annivo completions fish | source
function __annivo
  set -l given (commandline -opc)
  # All words that can stand here: fish takes those that go on from what is typed.
  annivo __complete $given[2..-1] (string match -r '^-?' -- (commandline -ct)) 2>/dev/null
end
complete -c annivo -n 'not __fish_seen_subcommand_from import file' -f
complete -c annivo -a '(__annivo)'
)END";
}

}  // namespace annivo
