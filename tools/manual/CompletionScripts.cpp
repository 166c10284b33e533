#include "tools/manual/CompletionScripts.h"

namespace Quorvan::Tools {

namespace {

// Readline's words end at "=" and ":" outside of quotes; answers are whole words and lose what the
// line has already. The rest of a word is inserted as it stands, so that blanks need backslashes
// there.
constexpr const char* kBash = R"(# Completes command lines of tesserae in bash.
_tesserae() {
    local word=${COMP_WORDS[COMP_CWORD]} line=${COMP_LINE:0:COMP_POINT} candidate rest kept=
    local unquoted=${line##*[[:space:]]}
    case $word in
        [\"\']*) unquoted= ;;
    esac
    [[ $unquoted == *[=:]* ]] && kept=${unquoted%"${unquoted##*[=:]}"}
    COMPREPLY=()
    while IFS=$'\t' read -r candidate rest; do
        if [[ $candidate == :files ]]; then
            compopt -o default
            continue
        fi
        [[ $word == [\"\']* ]] || printf -v candidate %q "$candidate"
        candidate=${candidate//\\=/=}
        COMPREPLY+=("${candidate#"$kept"}")
    done < <("$1" complete-line "$line" 2>/dev/null)
    [[ ${#COMPREPLY[@]} -gt 0 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace
    return 0
}
complete -F _tesserae tesserae
)";

constexpr const char* kZsh = R"(#compdef tesserae
# Completes command lines of tesserae in zsh.
_tesserae() {
    local line candidate description files=
    local -a names texts open openTexts
    line="${(j: :)words[1,CURRENT-1]} $QIPREFIX$PREFIX"
    while IFS=$'\t' read -r candidate description; do
        if [[ $candidate == :files ]]; then
            files=1
        elif [[ $candidate == *= ]]; then
            open+=("$candidate")
            openTexts+=("$candidate  $description")
        else
            names+=("$candidate")
            texts+=("$candidate  $description")
        fi
    done < <($words[1] complete-line "$line" 2>/dev/null)
    (( $#names )) && compadd -l -d texts -a names
    (( $#open )) && compadd -l -S '' -d openTexts -a open
    [[ -n $files ]] && _files
}
if [[ $funcstack[1] == _tesserae ]]; then
    _tesserae "$@"
else
    compdef _tesserae tesserae  # sourced, and not found by its name
fi
)";

constexpr const char* kFish = R"(# Completes command lines of tesserae in fish.
function __tesserae_complete
    for candidate in (tesserae complete-line (commandline -cp | string collect) 2>/dev/null)
        if test "$candidate" = :files
            __fish_complete_path (commandline -ct)
        else
            echo $candidate
        end
    end
end
complete -c tesserae -f -a '(__tesserae_complete)'
)";

}  // namespace

std::string CompletionScript(const std::string& shell) {
    if (shell == "bash")
        return kBash;
    if (shell == "zsh")
        return kZsh;
    return shell == "fish" ? kFish : "";
}

}  // namespace Quorvan::Tools
