# shellcheck shell=bash disable=SC2034 # what is set here is used by the scripts that source this one
# Sourced by the scripts that share one conversion among many workers: the recordings, a worker that hangs in the
# middle of one and is killed, and what must have come out. The caller has sourced common.sh.

many_start() { # VLWAV FOLDER COUNT: the list of so many recordings, in the folder, which is made anew
  local vlwav="$1"
  work="$2" count="$3"
  [[ "$count" =~ ^[1-9][0-9]{1,4}$ ]] || die "\"$count\" is no number of files from 10 to 99999"
  rm -rf "$work"
  mkdir -p "$work/in" "$work/bin" "$work/workers"
  say "$count recordings"
  sox -n -r 48000 -c 1 -b 16 "$work/sweep.wav" synth "$((count / 10 + 1))" sine 200-8000 gain -3
  # One file each tenth of a second; sox numbers them.
  sox "$work/sweep.wav" "$work/in/take .wav" trim 0 0.1 : newfile : restart
  rm "$work/sweep.wav"
  (cd "$work" && find in -name '*.wav' -print0 | sort -z | head -z -n "$count" >list)
  local made
  made="$(tr -cd '\0' <"$work/list" | wc -c)"
  ((made == count)) || die "sox made $made recordings"

  # The program of the workers, which leaves a note of each process.
  printf '#!/bin/sh\n: >"%s/workers/$$"\nexec "%s" "$@"\n' "$work" "$vlwav" >"$work/bin/vlwav"
  chmod +x "$work/bin/vlwav"
  PATH="$work/bin:$PATH"
  export VELTO_REGISTRY="$work/registry.db" # so that no other module is taken that the user has registered

  # What one machine makes of them, before one of them is a trap.
  (cd "$work" && vlwav convert --files-from list -o expected --rate 44100 --channels 2 --quiet >/dev/null)

  # A recording in the middle of the list gives half of itself and then nothing, until the worker is killed.
  trap_file="$work/$(tr '\0' '\n' <"$work/list" | sed -n "$((count / 2))p")"
  mv "$trap_file" "$work/whole.wav"
  mkfifo "$trap_file"
}

# Waits until a worker has read all that the trap gives, and kills it, in the middle of an output. The recording is
# whole again by then.
many_kill() { # JOB: the process that has the workers done
  say "waiting for a worker in the middle of its files"
  local pid="" note
  exec 9<>"$trap_file"
  head -c "$(($(stat -c %s "$work/whole.wav") / 2))" "$work/whole.wav" >&9
  until [[ -n "$pid" ]] && ! read -r -t 0 -u 9; do
    kill -0 "$1" || die "all has ended, and no worker was caught"
    sleep 0.1
    for note in "$work"/workers/*; do
      if find "/proc/${note##*/}/fd" -lname "$trap_file" 2>/dev/null | grep -q .; then pid="${note##*/}"; fi
    done
  done
  mv "$work/whole.wav" "$trap_file"
  say "killing worker $pid"
  kill -9 "$pid"
  exec 9>&-
  [[ ! -e "$work/out/$(basename "$trap_file")" ]] || die "half an output has its name"
}

# Every output is there, the same as that of one machine, and nothing else; the summaries of those that ended add up.
many_check() { # SUMMARY...
  diff -r "$work/expected" "$work/out" || die "the outputs aren't those of one machine"
  local sums converted skipped failed
  sums="$(cat "$@" | jq -s -r '[(map(.converted) | add), (map(.skipped) | add), (map(.failed) | add)] | @tsv')"
  read -r converted skipped failed <<<"$sums"
  say "$converted converted, $skipped made before their worker was killed, $failed failed"
  ((converted + skipped == count && failed == 0)) || die "the summaries don't add up to $count"
  ((skipped > 0)) || die "the worker was killed before it had made anything"
  say "every output once, the same as on one machine"
}
