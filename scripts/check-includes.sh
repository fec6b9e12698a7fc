#!/usr/bin/env bash
# Holds every #include of the product to the floors of the house: who may include whom is the table below.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# Ground first: a folder, and the folders that it includes from. Its own is always allowed, one further down this
# table never, so that arrows run down only. An entry that no file needs any more fails too. Platform and module
# may use riff, which stands below all.
FLOORS='
riff:
platform/base/posix:
platform/base: platform/base/posix
platform/sync/posix:
platform/sync: platform/sync/posix platform/base/posix platform/base
platform/file/posix: platform/base/posix
platform/file: platform/file/posix platform/sync platform/base
platform/loader/posix: platform/base
platform/loader: platform/loader/posix platform/sync platform/base
platform/registry/posix:
platform/registry: platform/registry/posix platform/loader platform/file platform/sync platform/base
platform/com: platform/registry platform/loader platform/base
platform/image: platform/com platform/loader platform/file platform/sync platform/base riff
platform/media: platform/com platform/file platform/sync platform/base riff
platform/media/streamreader: platform/media platform/com platform/sync platform/base
AudioCodec/shell/object: platform/com platform/sync platform/base
AudioCodec/attributes: AudioCodec/shell/object platform/sync platform/base riff
AudioCodec/shell/templates: AudioCodec/attributes AudioCodec/shell/object platform/com
AudioCodec/wave/converter: AudioCodec/shell/object
AudioCodec/wave/riff: AudioCodec/shell/object platform/com platform/file platform/base riff
AudioCodec/metadata: AudioCodec/wave/riff AudioCodec/shell/templates AudioCodec/attributes AudioCodec/shell/object platform/image platform/com platform/file platform/base riff
AudioCodec/wave: AudioCodec/metadata AudioCodec/wave/riff AudioCodec/wave/converter AudioCodec/shell/templates AudioCodec/attributes AudioCodec/shell/object platform/com platform/loader platform/file riff
AudioCodec/graph/filter: AudioCodec/shell/object platform/media platform/com platform/sync platform/base
AudioCodec/graph: AudioCodec/graph/filter AudioCodec/wave AudioCodec/wave/converter AudioCodec/shell/templates AudioCodec/attributes AudioCodec/shell/object platform/media platform/media/streamreader platform/com platform/loader platform/base
AudioCodec/shell: AudioCodec/wave AudioCodec/metadata AudioCodec/shell/templates AudioCodec/attributes AudioCodec/shell/object platform/registry platform/loader platform/file platform/sync platform/base
capi/posix:
capi: capi/posix AudioCodec/shell AudioCodec/wave AudioCodec/metadata AudioCodec/wave/riff AudioCodec/attributes AudioCodec/shell/object platform/registry platform/com platform/base riff
capi/output: capi capi/posix
capi/input: capi capi/posix platform/file platform/base riff
capi/chunks: capi/input capi riff
capi/id3:
capi/audio: capi/input capi capi/posix AudioCodec/wave AudioCodec/wave/converter AudioCodec/shell/object platform/com platform/sync platform/base riff
capi/handles: capi/audio capi/id3 capi/chunks capi/input capi/output capi/posix capi AudioCodec/wave AudioCodec/metadata platform/image platform/file platform/base riff
host/base:
host/terminal: host/base capi
host/files: host/terminal host/base capi
host/tags: host/terminal host/base capi
host/convert: host/tags host/files host/terminal host/base capi
host/info: host/tags host/terminal capi
host/cli: host/files host/terminal host/base capi
host/plot: host/base capi
host/compare: host/plot capi
host/commands: host/compare host/plot host/info host/convert host/tags host/cli host/files host/terminal host/base capi
host/pages: host/commands host/cli
host: host/commands host/cli host/files host/terminal host/base
'

# The folders of the layer and of the C library that know a system, and what only they include there.
SYSTEM_FOLDERS='posix'
SYSTEM_HEADERS='sys/[a-z]*|dirent|dlfcn|elf|fcntl|link|poll|pthread|pwd|sched|signal|unistd'

includes="$(git ls-files -co --exclude-standard -- 'AudioCodec/*.h' 'AudioCodec/*.cpp' 'platform/*.h' 'platform/*.cpp' \
  'riff/*.h' 'riff/*.cpp' 'capi/*.h' 'capi/*.hpp' 'capi/*.cpp' 'host/*.h' 'host/*.cpp' | xargs grep -HE '^[[:space:]]*#[[:space:]]*include[[:space:]]*["<]')"

# Every include as "file included file"; one without a folder stands beside the file that names it.
own="$(sed -nE 's/^([^:]*):[^"<]*"([^"]*)".*/\1 \2/p' <<<"$includes" |
  awk '{ if ($2 !~ /\//) { beside = $1; sub(/[^\/]*$/, "", beside); $2 = beside $2 } print }')"

awk '
  function folder(path) { sub(/\/[^\/]*$/, "", path); return path }
  function fail(text) { print text; failed = 1 }
  NR == FNR && NF {
    sub(/:$/, "", $1)
    row[$1] = ++rows
    for (i = 2; i <= NF; ++i) {
      if (!($i in row)) fail("the table lets " $1 " include from " $i ", which stands above it or nowhere")
      allowed[$1, $i] = 1
    }
  }
  NR != FNR {
    from = folder($1); to = folder($2)
    if (!(from in row)) fail($1 ": the table has no row for " from)
    else if (from != to && !allowed[from, to]) fail($1 ": includes " $2 ", which " from " may not")
    used[from, to] = 1
  }
  END {
    for (pair in allowed)
      if (!(pair in used)) { split(pair, side, SUBSEP); fail("the table lets " side[1] " include from " side[2] ", and no file does") }
    exit failed
  }' <(echo "$FLOORS") <(echo "$own") >&2 || die "an include leaves the floors"

tsort <<<"$own" >/dev/null || die "files include each other in a circle"

if grep -E "^(platform|capi)/[^:]*:.*<($SYSTEM_HEADERS)\.h>" <<<"$includes" | grep -vE "^(platform/[^:]*|capi)/($SYSTEM_FOLDERS)/" >&2; then
  die "a header of the system is included outside the folders that know a system"
fi
