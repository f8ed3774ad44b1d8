# Converts a page for Doxygen, in older and newer versions. Names the page after its file, replaces links to other pages
# with references to their names, and replaces links to source files with links to the pages that show them. Doxygen
# looks for the file of a link in its own directory first, which is the project's: a link that leads up would find the
# file of another project.
FNR == 1 {
    page = tolower(FILENAME)
    sub(/.*\//, "", page)
    sub(/\.md$/, "", page)
    if (page != "readme" && page != "origin")
        $0 = $0 " {#" page "}"
}
/^```/ { code = !code }
!code {
    while (match($0, /\]\((\.\.\/)*(src|file|query|report|validation|watch|examples)\/[a-z_]+\.(cpp|h)\)/)) {
        name = substr($0, RSTART + 2, RLENGTH - 3)
        sub(/.*\//, "", name)
        gsub(/_/, "__", name)
        sub(/\./, "_8", name)
        $0 = substr($0, 1, RSTART + 1) name (name ~ /_8h$/ ? "" : "_source") ".html" substr($0, RSTART + RLENGTH - 1)
    }
}
!code {
    done = ""
    while (match($0, /\]\([A-Za-z0-9.\/-]*\.md\)/)) {
        link = substr($0, RSTART + 2, RLENGTH - 3)
        name = tolower(link)
        sub(/.*\//, "", name)
        sub(/\.md$/, "", name)
        sub(/^(\.\.\/)+/, "", link)
        done = done substr($0, 1, RSTART + 1) (name ~ /^(readme|origin)$/ ? link : "@ref " name) ")"
        $0 = substr($0, RSTART + RLENGTH)
    }
    $0 = done $0
}
{ print }
