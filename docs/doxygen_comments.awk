#!/usr/bin/awk -f
# Turns the headers' plain comments into those that Doxygen reads: a comment above something is about
# it, one behind something about what stands there, and the one at the head of a file about the file
# and the class that it is named after. It is all text: nothing in it is a command, a tag or a link.
function text(line) {
    if (line ~ /^     /) return line  # code
    gsub(/\\/, "\\\\\\\\", line)
    gsub(/&/, "\\&amp;", line)
    gsub(/</, "\\&lt;", line)
    gsub(/>/, "\\&gt;", line)
    gsub(/@/, "\\\\@", line)
    gsub(/#/, "\\\\#", line)
    gsub(/%/, "\\\\%", line)
    return line
}
NR == 1 { print "/// @file"; in_head = 1 }
in_head && /^\/\// {
    head = head "///" text(substr($0, 3)) "\n"
    print "///" text(substr($0, 3))
    next
}
{ in_head = 0 }
/^(class|struct) .*\{$/ && !described {
    described = 1
    if (before !~ /^(\/\/|template)/) printf "%s", head
}
{ before = $0 }
/^ *\/\/ NOLINT/ { next }
# A headline in a class is about none of the members.
/^ *\/\/ ---/ { headline = 1 }
headline && /^ *\/\// { print; next }
{ headline = 0 }
/^ *\/\// {
    at = index($0, "//")
    print substr($0, 1, at - 1) "///" text(substr($0, at + 2))
    next
}
/[;,] *\/\/ / && !/"[^"]*\/\/[^"]*"/ && !/NOLINT/ {
    at = index($0, "// ")
    print substr($0, 1, at - 1) "///<" text(substr($0, at + 2))
    next
}
{ print }
