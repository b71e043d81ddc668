# Turns what "kelvotool help" and "kelvotool help COMMAND" print into the part of kelvotool(1) that
# lists commands and options, so that the page cannot tell of anything else than the program does.
# Each help page follows a line "@ COMMAND"; "@ common" stands for the overview.

function escape(text) {
    gsub(/\\/, "\\e", text)
    gsub(/-/, "\\-", text)
    return text
}

# A line of macros: what begins one, or ends a sentence, would be read as such.
function words(text,    parts, count, i, line) {
    count = split(text, parts, " ")
    line = ""
    for (i = 1; i <= count; i++) {
        line = line (i > 1 ? " " : "") "\\&" escape(parts[i])
    }
    return line
}

# Lines of text: one a sentence or clause, none longer than a page's source should be.
function sentence(text,    clauses, count, i) {
    text = escape(text)
    count = split(text (text ~ /[.!?]$/ ? "" : "."), clauses, /; /)
    for (i = 1; i <= count; i++) {
        wrap(clauses[i] (i < count ? ";" : ""))
    }
}

function wrap(text,    parts, count, i, line) {
    count = split(text, parts, " ")
    line = ""
    for (i = 1; i <= count; i++) {
        if (line != "" && length(line) + 1 + length(parts[i]) > 78) {
            print_text(line)
            line = ""
        }
        line = line (line == "" ? "" : " ") parts[i]
    }
    print_text(line)
}

function print_text(line) {
    print (line ~ /^[.']/ ? "\\&" : "") line
}

# "-o,--output OUT": each spelling, then its value.
function head(term, is_option,    space, names, value, parts, count, i, line) {
    space = index(term, " ")
    names = space ? substr(term, 1, space - 1) : term
    value = space ? substr(term, space + 1) : ""
    sub(/:?[A-Z]* in \[.*\]/, "", value)
    sub(/ *(Needs|Excludes): .*/, "", value)
    sub(/ *REQUIRED/, "", value)
    sub(/(^| )(TEXT|UINT|INT|FLOAT|NUMBER)( |$)/, " ", value)
    sub(/:(TEXT|UINT|INT|FLOAT|NUMBER)/, "", value)
    sub(/^ +/, "", value)
    sub(/ +$/, "", value)
    if (!is_option) {
        print ".It Ar " words(names) (value ~ /\.\.\.$/ ? " ..." : "")
        return
    }
    count = split(names, parts, ",")
    line = ".It"
    for (i = 1; i <= count; i++) {
        sub(/^-/, "", parts[i])
        line = line (i > 1 ? " , " : " ") "Fl " escape(parts[i])
    }
    print line (value != "" ? " Ar " words(value) : "")
}

function flush_item() {
    if (term == "") return
    if (!in_list) print ".Bl -tag -width Ds"
    in_list = 1
    head(term, section != "Positionals:")
    sentence(text)
    term = text = ""
}

function end_list() {
    flush_item()
    if (in_list) print ".El"
    in_list = 0
    if (also != "") print ".Pp\nIt also takes\n." also " ."
    also = ""
}

/^@ / {
    end_list()
    command = $2
    section = ""
    is_first = 1
    next
}
is_first {
    is_first = 0
    if (command == "common") {
        print ".Ss Common options"
        print "All commands take these options;"
        print "the last five only where the command says so."
    } else {
        print ".Ss kelvotool " command
        sentence($0)
    }
    next
}
/^Usage:/ { next }
/^[A-Za-z ]+:$/ {
    flush_item()
    section = $0
    # A page's common options stand once, at the end.
    skip = (command != "common" && section == "Common options:") || section == "Subcommands:"
    next
}
skip {
    if (match($0, /--(jsonl?|force|output|jobs)/)) {
        also = also (also == "" ? "" : " , ") "Fl " escape(substr($0, RSTART + 1, RLENGTH - 1))
    }
    next
}
/^  [^ ]/ {
    flush_item()
    line = substr($0, 3)
    gap = match(line, /   *[^ ]/)
    if (match(line, / in \[[^\]]*\]/)) {
        # The limits hold spaces.
        gap = RSTART + RLENGTH <= length(line) ? RSTART + RLENGTH : 0
    } else if (length(line) > 26 && substr(line, 1, 28) !~ /  /) {
        # The value is as wide as the column: one space lies before the text.
        gap = 0
        if (substr($0, 30, 1) == " " && length($0) > 30) gap = 28
    }
    term = gap ? substr(line, 1, gap - 1) : line
    text = gap ? substr(line, gap + 1) : ""
    sub(/ +$/, "", term)
    sub(/^ +/, "", text)
    next
}
/^ +[^ ]/ {
    line = $0
    sub(/^ +/, "", line)
    text = text (text == "" ? "" : " ") line
}
END { end_list() }
