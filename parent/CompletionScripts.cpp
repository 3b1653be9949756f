// SPDX-License-Identifier: MIT
#include "parent/CommandLine.h"

namespace annivo {

const char* completionScript(const std::string& shell) {
  // Each asks the program itself, so that there is no second list of commands to keep.
  if (shell == "bash") {
    return R"END(# source <(annivo completions bash)
_annivo() {
  local word
  COMPREPLY=()
  while IFS= read -r word; do
    COMPREPLY+=("$(printf %q "$word")")
  done < <(annivo __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
  }
complete -o default -F _annivo annivo
)END";
  }
  if (shell == "zsh") {
    return R"END(#compdef annivo
# source <(annivo completions zsh)
_annivo() {
  local -a found
  found=("${(@f)$(annivo __complete "${(@)words[2,CURRENT]}" 2>/dev/null)}")
  if [[ -n "${found[*]}" ]]; then compadd -- "${found[@]}"; else _files; fi
}
if [[ "$funcstack[1]" = _annivo ]]; then _annivo "$@"; else compdef _annivo annivo; fi
)END";
  }
  return R"END(# annivo completions fish | source
function __annivo
  set -l given (commandline -opc) (commandline -ct)
  annivo __complete $given[2..-1] 2>/dev/null
end
complete -c annivo -n 'not __fish_seen_subcommand_from import' -f
complete -c annivo -a '(__annivo)'
)END";
}

}  // namespace annivo
