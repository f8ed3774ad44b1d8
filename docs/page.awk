# Makes of a page what Doxygen takes: the page is named after its file, and what links to a source file of the project
# links to the page that shows it.
FNR == 1 {
    page = tolower(FILENAME)
    sub(/.*\//, "", page)
    sub(/\.md$/, "", page)
    if (page != "readme" && page != "origin")
        $0 = $0 " {#" page "}"
}
/^```/ { code = !code }
!code {
    while (match($0, /\]\((\.\.\/)*(src|file|examples)\/[a-z_]+\.(cpp|h)\)/)) {
        name = substr($0, RSTART + 2, RLENGTH - 3)
        sub(/.*\//, "", name)
        gsub(/_/, "__", name)
        sub(/\./, "_8", name)
        $0 = substr($0, 1, RSTART + 1) name (name ~ /_8h$/ ? "" : "_source") ".html" substr($0, RSTART + RLENGTH - 1)
    }
}
{ print }
