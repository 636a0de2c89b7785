#!/usr/bin/awk -f
# Turns the headers' plain comments into those that Doxygen reads: a comment above something is about
# it, the one at the head of a file about the file, and one behind something about what stands there.
# What stands in the comments is text: nothing in it is a command, a tag or a link.
function text(line) {
    gsub(/\\/, "\\\\", line)
    gsub(/&/, "\\&amp;", line)
    gsub(/</, "\\&lt;", line)
    gsub(/>/, "\\&gt;", line)
    gsub(/@/, "\\@", line)
    gsub(/#/, "\\#", line)
    gsub(/%/, "\\%", line)
    return line
}
# Lines that are indented by four are code.
function comment(line) {
    if (line ~ /^     /) return line
    return text(line)
}
BEGIN { head = 1 }
head && /^\/\// {
    if (NR == 1) print "/// @file"
    line = substr($0, 3)
    print "///" comment(line)
    next
}
head { head = 0 }
/^ *\/\/ NOLINT/ { print; next }
# A headline in a class is about none of the members.
/^ *\/\/ ---/ { headline = 1 }
headline && /^ *\/\// { print; next }
{ headline = 0 }
/^ *\/\// {
    at = index($0, "//")
    print substr($0, 1, at - 1) "///" comment(substr($0, at + 2))
    next
}
/[;,{] *\/\/ / && !/"[^"]*\/\/[^"]*"/ && !/NOLINT/ {
    at = index($0, "// ")
    # Behind an opening brace it is about what is inside.
    if ($0 !~ /\{ *\/\/ /) { print substr($0, 1, at - 1) "///<" comment(substr($0, at + 2)); next }
}
{ print }
