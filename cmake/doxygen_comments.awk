# Rewrites a header's plain comments as doxygen comments, on standard output, line for line if that is
# possible:
#   the comment at the top belongs to the file, and to the class with the file's name if that has no comment
#   of its own;
#   a comment before a declaration belongs to the declaration, as does one behind it on the same line;
#   "// --- Title" begins a group of members, up to the next title, the next access specifier or the end of
#   the class.
# Comments in the bodies of functions, and comments without a declaration behind them, are not changed.
# Usage: LC_ALL=C awk -f doxygen_comments.awk HEADER

BEGIN { at_top = 1 }

# A line of prose, in which doxygen must take every character literally. Code in backticks is not changed.
function escaped(text,    result, code) {
    while (match(text, /`[^`]*`/)) {
        code = substr(text, RSTART, RLENGTH)
        result = result plain(substr(text, 1, RSTART - 1)) code
        text = substr(text, RSTART + RLENGTH)
    }
    return result plain(text)
}
function plain(text) {
    gsub(/\\/, "\\\\", text)
    gsub(/[@<>#%&$*]/, "\\\\&", text)
    gsub(/::/, "\\::", text)
    return text
}

# The text of the comment line. It is kept until the line after it is known.
function keep(text) { held[++held_count] = text }

# Prints the comment as documentation. Indented lines after a blank one are an example.
function document(lines, count, indent, mark,    i, text, example, width) {
    for (i = 1; i <= count; ++i) {
        text = lines[i]
        match(text, /^ */)
        width = RLENGTH
        if (text !~ /^ *$/ && width < 3) example = 0
        else if (i > 1 && lines[i - 1] ~ /^ *$/ && width >= 3 && text !~ /^ *([-*]|[0-9]+\.) /) example = 1
        if (text ~ /^ *$/) print indent mark
        else if (example) print indent mark "    " text
        else print indent mark escaped(text)
    }
}
function release(as_documentation, indent,    i) {
    if (as_documentation) document(held, held_count, indent, "///")
    else for (i = 1; i <= held_count; ++i) print indent "//" held[i]
    held_count = 0
}

function end_group() { if (group) print group_indent "///@}"; group = 0 }

function is_scope(text) { return text ~ /(^|[ \t])(namespace|class|struct|union|enum)([ \t]|$)/ && text !~ /\(/ }
# Counts the braces of a line of code, to know whether it is inside of a function's body.
function count_braces(code,    i, letter) {
    gsub(/"([^"\\]|\\.)*"/, "", code)
    gsub(/'([^'\\]|\\.)'/, "", code)
    for (i = 1; i <= length(code); ++i) {
        letter = substr(code, i, 1)
        if (letter == "{") {
            kind[++depth] = is_scope(statement) ? "scope" : "body"
            if (kind[depth] == "body") ++bodies
            statement = ""
        } else if (letter == "}") {
            if (depth > 0 && kind[depth--] == "body") --bodies
            statement = ""
        } else if (letter == ";") statement = ""
        else statement = statement letter
    }
    statement = statement " "
}

FNR == 1 { name = FILENAME; sub(/.*\//, "", name); sub(/\.h$/, "", name) }

# The comment at the top.
at_top && /^\/\// { text = substr($0, 3); top[++top_count] = text; next }
at_top {
    print "/// \\file"
    document(top, top_count, "", "///")
    at_top = 0
}

/^[ \t]*\/\// {
    match($0, /^[ \t]*/)
    indent = substr($0, 1, RLENGTH)
    text = substr($0, RLENGTH + 3)
    sub(/^\//, "", text)
    if (bodies) { print; next }
    if (trailing && RLENGTH == trailing) { print indent "///<" escaped(text); next }
    if (text ~ /^ *--- *[^ -]/) {
        if (held_count) release(0, held_indent)
        end_group()
        sub(/^ *--- */, "", text)
        sub(/ *-+$/, "", text)
        print indent "/// \\name " escaped(text)
        print indent "///@{"
        group = 1
        group_indent = indent
        group_depth = depth
        next
    }
    if (text ~ /^ *---*$/) next
    held_indent = indent
    keep(text)
    next
}

{
    trailing = 0
    code = $0
    comment = ""
    if (match($0, /[ \t]\/\/ /) && substr($0, 1, RSTART) !~ /^[^"]*"[^"]*$/) {
        code = substr($0, 1, RSTART - 1)
        comment = substr($0, RSTART + 3)
        column = RSTART
    }
}
/^[ \t]*$/ { if (held_count) release(0, held_indent); print; next }
{
    if (!bodies && code ~ /^[ \t]*(\}|(public|protected|private):)/ && (!group || depth == group_depth)) {
        if (held_count) release(0, held_indent)
        end_group()
    }
    if (held_count) release(1, held_indent)
    else if (!bodies && match(code, "^(class|struct) ([A-Z_]+ )?" name "( |$)") && code !~ /;[ \t]*$/)
        document(top, top_count, "", "///")
    count_braces(code)
    if (comment != "" && !bodies && code ~ /[;,A-Za-z0-9_][ \t]*$/ && code !~ /^[ \t]*(#|\})/) {
        print code " ///<" escaped(comment)
        trailing = column
    } else print
}
END { end_group() }
