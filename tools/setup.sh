# shellcheck shell=bash
# What the commands of ./dev need before they can run: packages, PCRE2 for Windows, the Wine root.
# Sourced by ./dev, which sets `project` and `build` (absolute, without a trailing slash).
#
# Each Need… function does its work once and is cheap when it is done already. A result is made under
# another name and renamed, so that a run that was ended in the middle leaves nothing half made.

packages_linux=(g++ cmake ninja-build libwine-dev libpcre2-dev libhivex-dev libssl-dev uuid-dev
                libcli11-dev nlohmann-json3-dev googletest)
packages_windows=(g++ cmake ninja-build g++-mingw-w64-i686-posix libcli11-dev nlohmann-json3-dev
                  googletest)
packages_sources=(dpkg-dev ca-certificates)  # to unpack a source package
packages_wine=(mmdebstrap ca-certificates)
packages_tests=(libhivex-bin attr rsync ntfs-3g)
packages_bench=(strace rsync time)
packages_fuzz=(clang libclang-rt-14-dev)
packages_lint=(clang-format clang-tidy shellcheck)

Say() { printf 'dev: %s\n' "$*" >&2; }
Die() { Say "$*"; exit 1; }

# Runs the rest of the words with a lock held that all runs in this build folder share.
WithLock() {
  local name=$1
  shift
  mkdir -p "$build"
  (
    exec 9>"$build/.$name.lock"
    flock 9
    "$@" 9>&-
  )
}

# Installs those of the packages that aren't there. Asks the network only if one is missing.
NeedPackages() {
  local name missing=()
  for name in "$@"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null) == installed ]] || missing+=("$name")
  done
  ((${#missing[@]})) || return 0
  ((EUID == 0)) || Die "packages are missing; as root: apt-get install -y ${missing[*]}"
  WithLock packages InstallPackages "${missing[@]}"
}

InstallPackages() {
  local log=$build/packages.log
  Say "installing ${*}"
  export DEBIAN_FRONTEND=noninteractive
  {
    # A list that is half a year old names packages that the mirror no longer has.
    apt-get update -q &&
      apt-get install -q -y --no-install-recommends -o DPkg::Lock::Timeout=300 \
        -o Dpkg::Options::=--force-confold "$@"
  } </dev/null >"$log" 2>&1 || { tail -n 20 "$log" >&2; Die "packages could not be installed; see $log"; }
}

# The Debian mirror of this machine's own package sources, for its suite's main archive.
DebianMirror() {
  local mirror=
  if [[ -f /etc/apt/sources.list.d/debian.sources ]]; then
    mirror=$(sed -n 's/^URIs:[[:space:]]*\([^[:space:]]*\).*/\1/p' /etc/apt/sources.list.d/debian.sources | head -n 1)
  fi
  if [[ -z $mirror ]]; then
    mirror=$(cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null |
      sed -n 's/^deb[[:space:]]\{1,\}\(\[[^]]*\][[:space:]]*\)\{0,1\}\([^[:space:]]*\)[[:space:]]\{1,\}bookworm[[:space:]].*/\2/p' | head -n 1)
  fi
  [[ -n $mirror ]] || Die "no Debian 12 mirror in /etc/apt/sources.list or /etc/apt/sources.list.d"
  printf '%s\n' "$mirror"
}

# PCRE2's 16-bit library for the Windows build, from Debian's source package.
NeedPcre2() {
  [[ -f $build/pcre2-windows/lib/libpcre2-16.a ]] && return 0
  NeedPackages "${packages_windows[@]}" "${packages_sources[@]}"
  WithLock pcre2 MakePcre2 "$build/pcre2-windows"
}

# Sets `apt` to an apt-get that knows one source alone, read into a folder that goes away again: the
# machine's own package configuration is left as it is.
UseOwnApt() {
  local work=$1 source=$2
  mkdir -p "$work/lists/partial"
  chmod -R a+rX "$work"
  echo "$source" >"$work/sources.list"
  apt=(apt-get -q -o "Dir::Etc::SourceList=$work/sources.list" -o Dir::Etc::SourceParts=/dev/null
       -o "Dir::State::Lists=$work/lists" -o APT::Sandbox::User=root
       -o "Dir::Cache::pkgcache=" -o "Dir::Cache::srcpkgcache=")
}

MakePcre2() {
  local target=$1 work mirror
  local -a apt
  [[ -f $target/lib/libpcre2-16.a ]] && return 0
  Say "making PCRE2 for Windows"
  mirror=$(DebianMirror)
  work=$(mktemp -d /tmp/norvane-pcre2.XXXXXX)
  mkdir "$work/source"
  UseOwnApt "$work" "deb-src $mirror bookworm main"
  (
    cd "$work/source"
    "${apt[@]}" update
    "${apt[@]}" source pcre2
    cmake -S "$work"/source/pcre2-*/ -B "$work/build" -G Ninja \
      -DCMAKE_TOOLCHAIN_FILE="$project/cmake/windows-toolchain.cmake" -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_INSTALL_PREFIX="$target.part" -DPCRE2_BUILD_PCRE2_16=ON -DPCRE2_BUILD_PCRE2_8=OFF \
      -DPCRE2_BUILD_TESTS=OFF -DPCRE2_BUILD_PCRE2GREP=OFF -DPCRE2_SUPPORT_UNICODE=ON -DBUILD_SHARED_LIBS=OFF
    rm -rf "$target.part"
    cmake --build "$work/build"
    cmake --install "$work/build"
  ) </dev/null >"$build/pcre2-windows.log" 2>&1 || {
    tail -n 20 "$build/pcre2-windows.log" >&2
    Die "PCRE2 could not be made; see $build/pcre2-windows.log and $work"
  }
  rm -rf "$work" "$target"
  mv "$target.part" "$target"
}
