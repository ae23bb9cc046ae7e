# shellcheck shell=bash
# The Wine root and running Windows programs in it. Sourced by ./dev after setup.sh; run on its own only
# inside a mount namespace, by ExecInNamespace below.
#
# The root is a Debian of its own, because 32-bit Wine can't be installed beside everything on a 64-bit
# machine. A program sees in it the machine's own folders (all but the system's) at their own places, so
# that the project stands there at the same absolute path. All mounts live in the namespace of the
# program: none can be seen from outside, and none is in the way when build/ is removed.

# Sets `root` to where the root can be mounted on with nothing showing outside of the namespace.
#
# Where the machine's own root is a plain folder (in a chroot), it can't be asked whether its mounts show
# elsewhere. There the root is bound to a place below /dev, which is a mount of its own.
SealNamespace() {
  mount --make-rprivate / 2>/dev/null && return 0
  mount --make-rprivate /dev
  mount --bind "$root" /dev/shm
  root=/dev/shm
}

# What a namespace shows of the machine. Always the same set, since the first program's namespace is also
# that of the Wine server, which opens the files of all later programs.
BindMachine() {
  local place
  mount --rbind /proc "$root/proc"
  mount --rbind /dev "$root/dev"
  for place in /* /var/tmp "$project"; do
    [[ -d $place && ! -L $place ]] || continue
    case $place in
      /bin | /boot | /dev | /etc | /lib* | /lost+found | /proc | /run | /sbin | /sys | /usr | /var) continue ;;
    esac
    [[ $place -ef $root$place ]] && continue  # below a place that is bound already
    mkdir -p "$root$place"
    mount --rbind "$place" "$root$place"
  done
}

# Some virtual machines have kernels that start no 32-bit program. There QEMU runs them, which takes several
# times as long.
EmulateWhereNeeded() {
  local formats=$root/run/binfmt_misc
  # Of its own where it is only asked for, so that programs to come, without it, see no trace.
  [[ ${NORVANE_EMULATE-} != 1 ]] || formats+=-asked-for
  MustEmulate "$root" && RegisterEmulator "$formats"
  # Another namespace may have told the kernel; the folder shows that it had to be told.
  [[ -d $formats ]] || return 0
  # At its start Wine takes hold of all that lies above this, piece by piece, which costs QEMU a minute.
  export QEMU_RESERVED_VA=0x7fff0000
  # The C library needs it at the end of a thread, and then finds no room any more to load it into.
  export LD_PRELOAD=libgcc_s.so.1
}

# Tells the kernel to have QEMU run programs for the 80386, for as long as a namespace has `formats` mounted.
RegisterEmulator() {
  local formats=$1 emulator=$project/build/qemu-i386 header mask
  mkdir -p "$formats"
  mount -t binfmt_misc norvane-formats "$formats" || {
    echo "dev: this kernel starts no 32-bit program, and can't be told that QEMU does (binfmt_misc)" >&2
    exit 1
  }
  # The ELF header of an executable or a library for the 80386, and which of its bits count.
  header='\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00'
  mask='\xff\xff\xff\xff\xff\xfe\xfe\xfc\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff'
  # F: the emulator is opened now, so that programs inside the root need not find it; O and C: it runs on
  # the program's own open file and rights. Another namespace may be quicker, so what counts is the last look.
  [[ -e $formats/norvane-i386 ]] ||
    printf '%s' ":norvane-i386:M::$header:$mask:$emulator:FOC" >"$formats/register" 2>/dev/null || true
  RunsThirtyTwoBits "$root" && return 0
  echo "dev: this kernel starts no 32-bit program, and QEMU doesn't either" >&2
  exit 1
}

# Whether this kernel starts the programs of the root that are for the 80386.
RunsThirtyTwoBits() { "$1/lib/ld-linux.so.2" --version >/dev/null 2>&1; }

# NORVANE_EMULATE=1 has QEMU run them where the kernel could, to see what other machines see.
MustEmulate() { [[ ${NORVANE_EMULATE-} == 1 ]] || ! RunsThirtyTwoBits "$1"; }

# An X server of the program's own; sets `server` and DISPLAY.
StartDisplay() {
  local number folder
  folder=$(mktemp -d /tmp/norvane-display.XXXXXX)
  mkfifo "$folder/number"
  exec 4<>"$folder/number"
  rm -r "$folder"
  chroot "$root" Xvfb -displayfd 4 -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 </dev/null &
  server=$!
  read -r -t 20 -u 4 number || { echo "dev: Xvfb did not start" >&2; exit 1; }
  exec 4>&-
  export DISPLAY=:$number
}

# Ends all that ran on the display of its own, and drops its prefix.
LeaveDisplay() {
  if [[ -n ${server-} ]]; then
    chroot "$root" wineserver -k 2>/dev/null
    kill "$server" 2>/dev/null
    wait "$server" 2>/dev/null
  fi
  rm -rf "$1"
}

# Inside the namespace: the words after the first four are a command of the root.
EnterWine() {
  root=$1 project=$2
  local prefix=$3 own_display=$4 folder=$PWD status=0
  shift 4
  # shellcheck disable=SC2064
  if ((own_display)); then trap "LeaveDisplay '$prefix'" EXIT; fi
  SealNamespace
  BindMachine
  unset LD_PRELOAD LD_LIBRARY_PATH WINEARCH WINELOADER
  EmulateWhereNeeded
  export WINEPREFIX=$prefix WINEDEBUG=${WINEDEBUG:--all} HOME=$project/build/wine-home LANG=C.UTF-8 LC_ALL=C.UTF-8
  export PATH=/usr/sbin:/usr/bin:/sbin:/bin WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-winemenubuilder.exe=}
  [[ -d $root$folder ]] || folder=$project
  if ((!own_display)); then
    exec chroot "$root" env -C "$folder" "$@"
  fi
  StartDisplay
  chroot "$root" env -C "$folder" "$@" || status=$?
  exit "$status"
}

# Runs a command of the root in a namespace of its own: prefix, whether it gets a display of its own, the
# command's words. Doesn't come back.
ExecInNamespace() {
  local flags=(-m --propagation unchanged)
  ((EUID == 0)) || flags+=(--map-root-user)
  exec unshare "${flags[@]}" bash "$project/tools/wine.sh" "$build/wine-root" "$project" "$@"
}

# True if the program is one for the screen: the subsystem field of its header is 2.
IsWindowProgram() {
  local header subsystem
  [[ -f $1 && $(head -c 2 "$1" | tr -d '\0') == MZ ]] || return 1
  header=$(od -A n -t u4 -j 60 -N 4 "$1")
  subsystem=$(od -A n -t u2 -j $((header + 92)) -N 2 "$1")
  ((subsystem == 2))
}

NeedWine() {
  if [[ ! -f $build/wine-prefix/.ready ]]; then
    NeedPackages "${packages_wine[@]}"
    WithLock wine-root MakeWineRoot
  fi
  # Also where the prefix is ready: build/ may have been carried here from another machine.
  if [[ ! -x $build/qemu-i386 ]] && MustEmulate "$build/wine-root"; then
    WithLock emulator MakeEmulator
  fi
  [[ -f $build/wine-prefix/.ready ]] || WithLock wine-prefix MakeWinePrefix
}

MakeWineRoot() {
  local root=$build/wine-root mirror
  [[ -f $root/usr/bin/wine-stable ]] && return 0
  Say "making the Wine root"
  mirror=$(DebianMirror)
  rm -rf --one-file-system "$root" "$root.part"
  # Only the suite's main archive: others have no i386 for all of it.
  mmdebstrap --quiet --variant=apt --architectures=amd64,i386 \
    --include=wine,wine64,wine32:i386,xvfb,fonts-liberation \
    --dpkgopt='path-exclude=/usr/share/doc/*' --dpkgopt='path-exclude=/usr/share/man/*' \
    --dpkgopt='path-exclude=/usr/share/locale/*' \
    bookworm "$root.part" "deb $mirror bookworm main" </dev/null >"$build/wine-root.log" 2>&1 || {
    tail -n 20 "$build/wine-root.log" >&2
    Die "the Wine root could not be made; see $build/wine-root.log"
  }
  mv "$root.part" "$root"
}

# One file out of Debian's package, which has emulators for all processors. The version of Debian 12 itself
# crashes with several threads; the one of its backports doesn't.
MakeEmulator() {
  local work
  local -a apt
  [[ -x $build/qemu-i386 ]] && return 0
  Say "this machine starts no 32-bit programs: getting QEMU for those of the Wine root"
  work=$(mktemp -d /tmp/norvane-qemu.XXXXXX)
  UseOwnApt "$work" "deb $(DebianMirror) bookworm-backports main"
  (
    cd "$work"
    "${apt[@]}" update
    "${apt[@]}" download qemu-user
    dpkg-deb --fsys-tarfile qemu-user_*.deb | tar -xO ./usr/bin/qemu-i386 >"$build/qemu-i386.part"
    chmod +x "$build/qemu-i386.part"
  ) </dev/null >"$build/qemu.log" 2>&1 || {
    tail -n 20 "$build/qemu.log" >&2
    Die "QEMU could not be fetched; see $build/qemu.log"
  }
  rm -rf "$work"
  mv "$build/qemu-i386.part" "$build/qemu-i386"
}

# The prefix, which is the Windows machine: its drive C and its registry.
MakeWinePrefix() {
  local prefix=$build/wine-prefix part=$build/wine-prefix.part link
  [[ -f $prefix/.ready ]] && return 0
  Say "making the Wine prefix"
  rm -rf "$prefix"
  mkdir -p "$build/wine-home"
  # Under QEMU a program of the first start may come to nothing, so there is a second one.
  (StartPrefix "$part" || StartPrefix "$part") </dev/null >"$build/wine-prefix.log" 2>&1 || {
    tail -n 20 "$build/wine-prefix.log" >&2
    Die "the Wine prefix could not be made; see $build/wine-prefix.log"
  }
  # The folders of the account are real ones: no program here shall write into a home folder of the machine.
  while IFS= read -r -d '' link; do
    rm "$link"
    mkdir "$link"
  done < <(find "$part/drive_c/users" -type l -print0)
  touch "$part/.ready"
  mv "$part" "$prefix"
}

StartPrefix() {
  unset DISPLAY
  export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe="
  rm -rf "$1"
  (ExecInNamespace "$1" 0 wine wineboot -i) && (ExecInNamespace "$1" 0 wineserver -w) || return 1
  [[ -f $1/drive_c/windows/syswow64/kernel32.dll ]] || return 1
  # Liberation Sans stands for Arial, without which GDI+ draws no text. The server has ended, so its file
  # can be written to.
  printf '\n[Software\\\\Wine\\\\Fonts\\\\Replacements]\n"Arial"="Liberation Sans"\n' >>"$1/user.reg"
}

# ./dev wine [--display] PROGRAM [ARGUMENTS]
#
# A console program needs no display and gets none. A program for the screen with no DISPLAY set gets an X
# server and a prefix of its own: a Wine server keeps the display that it was started with, so the shared
# one can't serve it.
RunInWine() {
  local own_display=0 window=0 prefix=$build/wine-prefix program
  if [[ ${1-} == --display ]]; then
    window=1
    shift
  fi
  (($#)) || Die "usage: ./dev wine [--display] PROGRAM [ARGUMENTS]"
  NeedWine
  program=$1
  shift
  [[ -f $program ]] && program=$(realpath -s "$program")
  IsWindowProgram "$program" && window=1
  if [[ -n ${DISPLAY-} ]]; then
    prefix=$build/wine-prefix-display-${DISPLAY//[^0-9A-Za-z.]/_}
    [[ -f $prefix/.ready ]] || WithLock wine-prefix CopyPrefix "$prefix"
  elif ((window)); then
    own_display=1
    prefix=$build/wine-prefix-own-$$
    CopyPrefix "$prefix"
  fi
  ExecInNamespace "$prefix" "$own_display" wine "$program" "$@"
}

# By hard links: the prefix is a gigabyte, and what changes in it is replaced by a rename.
CopyPrefix() {
  [[ -f $1/.ready ]] && return 0
  rm -rf "$1"
  cp -al "$build/wine-prefix" "$1"
}

if [[ ${BASH_SOURCE[0]} == "$0" ]]; then
  set -euo pipefail
  EnterWine "$@"
fi
