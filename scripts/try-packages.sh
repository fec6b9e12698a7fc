#!/usr/bin/env bash
# Tries the packages of build/packages in a bare Debian 12 below build/try: without the recommended packages and with
# them, by programs built there as the guides say, through an upgrade under a running host, and away again. As root.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

((EUID == 0)) || die "chroot takes root's rights"
need "${TRY_PACKAGES[@]}"
compgen -G 'build/packages/vlwav_*.deb' >/dev/null || die "build/packages has no packages; scripts/package.sh makes them"

base=build/try/base
root=build/try/root
python=()
compgen -G 'build/packages/python3-vlwav_*.deb' >/dev/null && python=(python3-vlwav)

if [[ ! -f $base/etc/debian_version ]]; then
  say "a bare Debian 12, once"
  rm -rf $base.new
  debootstrap --variant=minbase bookworm $base.new >build/try.log 2>&1 || die "debootstrap failed; see build/try.log"
  chroot $base.new apt-get clean
  mv $base.new $base
fi

leave() {
  local place
  for place in proc dev; do
    ! mountpoint -q "$ROOT/$root/$place" || umount "$ROOT/$root/$place"
  done
}
leave
rm -rf --one-file-system "$root"
cp -a $base $root
trap leave EXIT
mount -t proc proc $root/proc
mount -t tmpfs dev $root/dev
for device in 'null 1 3' 'zero 1 5' 'full 1 7' 'random 1 8' 'urandom 1 9'; do
  read -r name major minor <<<"$device"
  mknod -m 666 "$root/dev/$name" c "$major" "$minor"
done
ln -s /proc/self/fd $root/dev/fd
cp -L /etc/resolv.conf $root/etc/resolv.conf
printf '#!/bin/sh\nexit 101\n' >$root/usr/sbin/policy-rc.d
chmod +x $root/usr/sbin/policy-rc.d

# inside COMMAND: a line for the shell of the bare system, whose user has a folder of his own.
inside() {
  chroot $root env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
    sh -ec "cd /root; $1"
}
# inside_quietly COMMAND: what it says shows where it fails.
inside_quietly() {
  inside "$1" >build/try.log 2>&1 && return
  tail -40 build/try.log >&2
  die "this failed in the bare system: $1"
}
# install_in OPTION_OR_PACKAGE...: by apt; ours from their files.
install_in() {
  local each given=()
  for each in "$@"; do
    if [[ "$each" != -* ]] && compgen -G "build/packages/${each}_*.deb" >/dev/null; then
      each="/packages/${each}_*.deb"
    fi
    given+=("$each")
  done
  inside_quietly "apt-get install -y -q ${given[*]}"
}
# expect WHAT PATTERN TEXT
expect() { grep -Eq -- "$2" <<<"$3" || die "$1: expected \"$2\", got: $3"; }
same() { cmp "$root/root/$1" "$root/root/$2" || die "$1 and $2 differ"; }
# What a package could leave behind. Logs, the packages' own lists and caches are those of apt.
files() { (cd $root && find . -xdev \( -path ./packages -o -path ./proc -o -path ./dev -o -path ./var/log -o -path ./var/cache \
  -o -path ./var/lib/apt -o -path ./var/lib/dpkg -o -path ./root \) -prune -o -print | sort); }
packages_in() { inside "dpkg-query -W -f '\${Package}\n'" | sort; }
# size_in PACKAGE...: of their files, in KiB.
size_in() {
  inside "dpkg-query -L $* | grep . | xargs -d '\\n' stat -c '%F %s %n'" |
    awk '/^regular/ && !seen[$NF]++ { all += $(NF - 1) } END { print int(all / 1024) }'
}

cp -r build/packages $root/packages
inside_quietly 'apt-get update -q'
sox -n -r 48000 -c 2 -b 16 $root/root/in.wav synth 1.5 sine 440 sine 660 gain -6
sox -D $root/root/in.wav -e ima-adpcm $root/root/packed.wav

say "bare: without what is recommended"
packages_in >build/try-packages
files >build/try-before
install_in --no-install-recommends libvlacwav3 libvlwav1 vlwav
mapfile -t new < <(packages_in | comm -13 build/try-packages -)
size="$(size_in "${new[@]}")"
say "$size KiB in ${new[*]}; $(size_in libvlacwav3 libvlwav1 vlwav) KiB of them ours"
((size < 5500)) || die "that is more than about 5 MB"
inside 'vlwav --version' | sed 's/^/   /'
expect "the module is registered" 'found by the registry: /usr/lib/.*/vlacwav3/' "$(inside 'vlwav where --verbose 2>&1')"
inside 'vlwav convert in.wav -o out.wav --rate 44100 --channels 1' | sed 's/^/   /'
for command in 'decode packed.wav -o none.raw' 'convert packed.wav -o none.wav'; do
  said="$(inside "vlwav $command 2>&1" || true)"
  expect "$command without a decoder" 'package libavformat59' "$said"
done
say "$said"
[[ ! -e $root/root/none.raw && ! -e $root/root/none.wav ]] || die "something was made without a decoder"

say "bare: away again"
inside_quietly 'vlwav convert in.wav -o a.wav --rate 8000 --quiet; apt-get purge -y --autoremove libvlacwav3'
rm -f $root/root/a.wav
files >build/try-after
# What belongs to a package that apt took as well is gone with it; the loader's cache is written anew.
diff build/try-before build/try-after || die "this is left behind, or gone too"
! inside 'ls -d /etc/velto /usr/share/velto 2>/dev/null' || die "a registry is left"

say "with the decoder's package, the guides and the headers"
install_in --no-install-recommends libvlacwav3 libvlwav1 libvlwav-dev vlwav vlwav-doc "${python[@]}" libavformat59
install_in --no-install-recommends gcc g++ libc6-dev cmake make pkg-config
inside 'for file in in packed; do vlwav decode $file.wav --rate 44100 --channels 1 -o $file.raw --quiet; done
  cp -r /usr/share/doc/vlwav-doc/examples programs; cp /usr/share/doc/vlwav-doc/example-host.cpp .'

say "programs in C and C++, by pkg-config and by CMake"
inside_quietly 'cc -std=c11 programs/c/resample.c -o resample-c $(pkg-config --cflags --libs vlwav)
  c++ programs/cpp/resample.cpp -o resample-cpp $(pkg-config --cflags --libs vlwav-cpp)
  c++ example-host.cpp -o example-host $(pkg-config --cflags VlACWav3)
  mkdir project
  cat >project/CMakeLists.txt <<EOF
cmake_minimum_required(VERSION 3.16)
project(programs LANGUAGES C CXX)
find_package(vlwav 1.0 REQUIRED)
add_executable(cmake-c ../programs/c/resample.c)
target_link_libraries(cmake-c PRIVATE vlwav::vlwav)
add_executable(cmake-cpp ../programs/cpp/resample.cpp)
target_link_libraries(cmake-cpp PRIVATE vlwav::cpp)
find_package(VlACWav3 3.0 REQUIRED)
add_executable(cmake-host ../example-host.cpp)
target_link_libraries(cmake-host PRIVATE VlACWav3::sdk)
file(WRITE \${CMAKE_BINARY_DIR}/module "\${VlACWav3_MODULE}")
EOF
  cmake -S project -B built && cmake --build built'
for program in ./resample-c ./resample-cpp built/cmake-c built/cmake-cpp; do
  for file in in packed; do
    inside "$program $file.wav 44100 1 by-program.raw" >/dev/null
    same by-program.raw $file.raw
    rm $root/root/by-program.raw
  done
done
[[ "$(inside 'pkg-config --variable=module VlACWav3; cat built/module' | xargs -n1 realpath -m | sort -u | wc -l)" == 1 ]] ||
  die "pkg-config and CMake name two modules"
inside 'vlwav decode packed.wav -o whole.raw --quiet'
frames=$(($(stat -c %s $root/root/whole.raw) / 4))
for host in ./example-host built/cmake-host; do
  expect "$host" '^72000 frames promised, 72000 read$' "$(inside "$host \$(cat built/module) in.wav")"
  # The module gives all of the last block, the library what the head tells.
  expect "$host" "promised, ${frames:0:2}[0-9]{3} read\$" "$(inside "$host \$(cat built/module) packed.wav")"
done

if ((${#python[@]})); then
  say "a program in Python"
  inside 'python3 -c "
import vlwav
for name in (\"in\", \"packed\"):
    data, rate = vlwav.read(name + \".wav\", rate=44100, channels=1)
    open(name + \"-py.raw\", \"wb\").write(data.tobytes())
"'
  same in-py.raw in.raw
  same packed-py.raw packed.raw
fi

say "an upgrade under two running hosts, one of which needs a decoder afterwards"
cp tests/packages/running-host.c $root/root
inside 'cc -std=c11 running-host.c -o running-host $(pkg-config --cflags --libs vlwav)'
# The next release: the same files, each under a new version.
for package in build/packages/*.deb; do
  rm -rf build/try/next
  dpkg-deb -R "$package" build/try/next
  sed -Ei 's/^(Version: .*|.*\(= [^)]*)(-[0-9]+)/\1\2+next/' build/try/next/DEBIAN/control
  sed -Ei 's/\(= ([0-9.]+-[0-9]+)\)/(= \1+next)/g' build/try/next/DEBIAN/control
  dpkg-deb --root-owner-group -b build/try/next "$root/packages/next-$(basename "$package")" >/dev/null
done
mkfifo build/try/go build/try/go-late 2>/dev/null || true
inside './running-host in.wav packed.wav' <build/try/go >build/try/upgraded &
upgraded=$!
inside './running-host in.wav packed.wav' <build/try/go-late >build/try/bereft &
bereft=$!
exec 8>build/try/go 9>build/try/go-late
for said in build/try/upgraded build/try/bereft; do
  until grep -q ready $said; do sleep 0.1; done
done
inside_quietly 'apt-get install -y -q --no-install-recommends /packages/next-*.deb'
expect "upgraded" '\+next$' "$(inside "dpkg-query -W -f '\${Version}' libvlacwav3")"
echo >&8
wait $upgraded || true
expect "a host that ran through the upgrade" "^$frames frames\$" "$(cat build/try/upgraded)"
expect "the module is registered" 'found by the registry: ' "$(inside 'vlwav where --verbose 2>&1')"

say "removal under a running host"
inside_quietly 'apt-get remove -y libvlacwav3 vlwav-doc'
echo >&9
wait $bereft || true
expect "a host whose libraries are gone" 'install what is missing' "$(cat build/try/bereft)"
left="$(cd $root && find . -xdev \( -path ./root -o -path ./packages -o -path ./proc -o -path ./dev -o \
  -path ./var/lib/dpkg \) -prune -o \( -iname '*vlwav*' -o -iname '*vlacwav*' -o -name 'libvl*' -o -name velto \) -print)"
[[ -z "$left" ]] || die "this is left behind: $left"
rm -f build/try/go build/try/go-late build/try-before build/try-after build/try-packages
say "all is well"
