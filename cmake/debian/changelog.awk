# Writes the entries of CHANGELOG.md as Debian has them: a version is a heading of the second level, "## 1.2.3 - 2026-01-31",
# and each item of a list one there. Headings between tell nothing that the items don't, and neither do paragraphs.
function trailer(    command, date) {
  if (!day) return
  flush_item()
  command = "LC_ALL=C date -u -R -d " day
  command | getline date
  close(command)
  printf "\n -- %s  %s\n\n", maintainer, date
  day = ""
}
function flush_item(    count, words, i, line) {
  if (!item) return
  count = split(item, words, " ")
  line = "  *"
  for (i = 1; i <= count; i++) {
    if (length(line) + length(words[i]) >= 79) { print line; line = "   " }
    line = line " " words[i]
  }
  print line
  item = ""
}
/^## / {
  trailer()
  day = $4
  printf "vlacwav3 (%s-%s) unstable; urgency=medium\n\n", $2, release
  next
}
/^- / { flush_item(); item = substr($0, 3); next }
/^  / && item { item = item " " $0; next }
{ flush_item() }
END { trailer() }
