# Completion of tavolin's command line in bash: the program itself says what may come next.
_tavolin() {
    local candidate IFS=$'\n'
    COMPREPLY=()
    while IFS= read -r candidate; do
        COMPREPLY+=("$candidate")
        # What ends with these goes on.
        [[ $candidate == *[=/] ]] && compopt -o nospace
    done < <("${COMP_WORDS[0]}" complete -- "${COMP_LINE:0:COMP_POINT}" 2>/dev/null)
}
complete -o default -F _tavolin tavolin
