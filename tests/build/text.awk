# What documents.sh and prose.sh know of text in UTF-8 and of C++ sources.

# The columns of a text.
function columns(text) { gsub(/[\200-\277]/, "", text); return length(text) }

# Whether any of this line of a source lies in a raw string. Called for each line in order; `first` is true for the first
# line of a file. raw_end is the end of the raw string that is open.
function touches_raw(text, first,    touched, start) {
    if (first) raw_end = ""
    for (;;) {
        if (raw_end == "") {
            if (!match(text, /R"[A-Za-z_]*\(/)) return touched
            start = substr(text, RSTART + 2, RLENGTH - 3)
            text = substr(text, RSTART + RLENGTH)
            raw_end = ")" start "\""
        }
        touched = 1
        if (!index(text, raw_end)) return touched
        text = substr(text, index(text, raw_end) + length(raw_end))
        raw_end = ""
    }
}
