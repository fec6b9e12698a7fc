#!/usr/bin/env bash
# Makes the pages of this project, build/docs/html/index.html: the guides, the manual of vlwav, and the reference of the
# C library, its C++ header and the module's interfaces. docs.sh [VLWAV_PAGES]: the program that writes the manual (that
# of the release build, which is made). Ends with an error where Doxygen warns or a link leads nowhere.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${DOCS_PACKAGES[@]}"
pages="${1:-}"
if [[ -z "$pages" ]]; then
  need "${BUILD_PACKAGES[@]}"
  CONFIGURE=("${SHIPPED_ALONE[@]}")
  build release vlwav_pages
  pages=build/release/bin/vlwav_pages
fi
made=build/docs
rm -rf "$made"
mkdir -p "$made/manual"

# The manual's pages as parts of the site; names of other pages in them become links.
say "the manual"
"$pages" "$made/manual/source" || die "$pages wrote no manual"
commands=()
for page in "$made"/manual/source/vlwav*.1; do
  name="$(basename "$page" .1)"
  commands+=("$name")
  mandoc -T html -O fragment "$page" |
    sed -E 's,(vlwav(-[a-z]+)*)\(1\),<a href="\1.html">\1(1)</a>,g; s,(^|[ (])(--[a-z-]+),\1<code>\2</code>,g' \
      >"$made/manual/$name.part"
  printf '/** @page %s %s\n@htmlonly <div class="manual"> @endhtmlonly\n@htmlinclude %s.part\n@htmlonly </div> @endhtmlonly */\n' \
    "$name" "${name/-/ }" "$name" >"$made/manual/$name.dox"
done

# The bar at the top of each page. README and CONTRIBUTING lie above docs/, whose files are all there by themselves.
guides=(docs/*-guide.md)
more=()
for page in docs/*.md CONTRIBUTING.md CHANGELOG.md; do
  [[ "$page" == *-guide.md || ! -e "$page" ]] || more+=("$page")
done
entry() { printf '<tab type="user" title="%s" url="%s"/>\n' "$2" "$1"; } # PAGE TITLE
group() {                                                                # TITLE PAGE.md...
  printf '<tab type="usergroup" title="%s">\n' "$1"
  local page
  for page in "${@:2}"; do
    entry "@ref $(basename "${page,,}" .md)" "$(sed -n 's/^# //p' "$page" | head -n 1)"
  done
  printf '</tab>\n'
}
{
  printf '<doxygenlayout version="1.0"><navindex>\n<tab type="mainpage" title="Start"/>\n'
  group Guides "${guides[@]}"
  printf '<tab type="usergroup" title="Manual">\n'
  for name in "${commands[@]}"; do entry "@ref $name" "${name/-/ }"; done
  printf '</tab>\n<tab type="usergroup" title="Reference">\n'
  entry "@ref vlwav.h" "C: vlwav.h"
  entry "@ref vlwav_more.h" "C: vlwav_more.h"
  entry "@ref vlw" "C++: vlwav.hpp"
  entry "@ref vlacwav3" "The module's interfaces"
  printf '<tab type="classlist" title="All classes"/><tab type="filelist" title="All headers"/></tab>\n'
  group More "${more[@]}"
  printf '</navindex>\n'
  # What a header says of all that is in it comes first.
  printf '<file><detaileddescription title=""/><memberdecl><classes visible="yes" title=""/>'
  printf '<defines title=""/><typedefs title=""/><enums title=""/><functions title=""/><variables title=""/></memberdecl>'
  printf '<memberdef><defines title=""/><typedefs title=""/><enums title=""/><functions title=""/><variables title=""/>'
  printf '</memberdef></file></doxygenlayout>\n'
} >"$made/layout.xml"

say "the pages"
mapfile -t interfaces < <(sed -n '/^set(VL_SDK_HEADERS/,/)/s/^ *\([A-Za-z0-9/]*\.h\))*$/\1/p' cmake/Sdk.cmake)
version="$(sed -n 's/^project(.*VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)"
{
  printf '@INCLUDE = docs/site/Doxyfile\n'
  printf 'PROJECT_NUMBER = %s\nOUTPUT_DIRECTORY = %s\nLAYOUT_FILE = %s\n' "$version" "$made" "$made/layout.xml"
  printf 'EXAMPLE_PATH = %s\nSTRIP_FROM_PATH = "%s"\nSTRIP_FROM_INC_PATH = "%s" "%s"\n' "$made/manual" "$ROOT" \
    "$ROOT/capi" "$ROOT"
  printf 'HTML_EXTRA_FILES = %s\n' "$(printf '%s ' docs/*.png)"
  printf 'INPUT = README.md %s capi/vlwav.h capi/vlwav_more.h capi/vlwav.hpp %s %s\n' "${guides[*]} ${more[*]}" \
    "${interfaces[*]}" "docs/site/namespaces.dox $made/manual"
} >"$made/Doxyfile"
doxygen "$made/Doxyfile" || die "Doxygen has something to say"

/usr/bin/python3 docs/site/check_links.py "$made/html" || die "there are links that lead nowhere"
say "open $made/html/index.html"
