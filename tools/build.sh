# shellcheck shell=bash
# Building, testing, measuring. Sourced by ./dev after setup.sh and wine.sh.

# Configures once (CMake looks after changes itself) and builds.
BuildPreset() {
  local preset=$1 log=$build/$1.log
  mkdir -p "$build"
  if [[ ! -f $build/$preset/build.ninja ]]; then
    (cd "$project" && cmake --preset "$preset") >"$log" 2>&1 || {
      tail -n 30 "$log" >&2
      Die "CMake failed; see $log"
    }
  fi
  Say "building $preset"
  # Quiet where all is well: what ninja says of a failing step is all that a reader needs.
  ninja -C "$build/$preset" "${@:2}" >"$log" 2>&1 || {
    grep -v '^\[[0-9]*/[0-9]*\]' "$log" | tail -n 60 >&2
    Die "the build failed; see $log"
  }
}

BuildLinux() {
  NeedPackages "${packages_linux[@]}"
  BuildPreset linux-release
}

BuildWindows() {
  NeedPackages "${packages_windows[@]}"
  NeedPcre2
  BuildPreset windows-release
}

# ./dev build [windows]
RunBuild() {
  case ${1-} in
    '') BuildLinux; Say "made build/bin/norvanectl and build/bin/norvane-machine" ;;
    windows) BuildWindows; Say "made build/windows/norvanectl.exe" ;;
    *) Die "usage: ./dev build [windows]" ;;
  esac
}

# Where the tests make their files: in memory, if the machine has room for that and keeps attributes there.
# The campaigns make and remove very many files, and much of their time on a disk is waiting for it.
FolderForFiles() {
  local folder=${TMPDIR:-/tmp} place room
  room=$(df --output=avail -B 1G /dev/shm 2>/dev/null | tail -n 1) || room=0
  if [[ -z ${TMPDIR-} ]] && ((room >= 8)) && place=$(mktemp /dev/shm/norvane-probe.XXXXXX 2>/dev/null); then
    ! setfattr -n user.norvane -v 1 "$place" 2>/dev/null || folder=/dev/shm
    rm -f "$place"
  fi
  printf '%s\n' "$folder"
}

# Runs the tests of a build; adds what came of them to `passed`, `failed` and `skipped`.
RunTests() {
  local preset=$1 log=$build/$1-tests.log status=0
  Say "testing $preset"
  (cd "$project" && ctest --preset "$preset" -j "$(nproc)" --no-tests=error) || status=1
  log=$build/$preset/Testing/Temporary/LastTest.log
  # Each case of GoogleTest counts; a script that is a test counts as one.
  local counts
  counts=$(awk '
    /^\[  PASSED  \] [0-9]+ test/ { passed += $4; cases = 1 }
    /^\[  SKIPPED \] [0-9]+ test/ { skipped += $4; cases = 1 }
    /^\[  FAILED  \] [0-9]+ test/ { failed += $4; cases = 1 }
    /^Test Passed\./ { if (!cases) passed++; cases = 0 }
    /^Test Failed\./ || /^Test timed out/ { if (!cases) failed++; cases = 0 }
    END { print passed + 0, failed + 0, skipped + 0 }' "$log" 2>/dev/null) || counts="0 0 0"
  local -a count
  read -r -a count <<<"$counts"
  passed=$((passed + count[0])) failed=$((failed + count[1])) skipped=$((skipped + count[2]))
  # A program that crashed counted nothing.
  if ((status && count[1] == 0)); then failed=$((failed + 1)); fi
}

# ./dev test [linux|windows]
RunAllTests() {
  local which=${1-all} passed=0 failed=0 skipped=0 job=
  case $which in
    all | linux | windows) ;;
    *) Die "usage: ./dev test [linux|windows]" ;;
  esac
  local -a packages=("${packages_tests[@]}")
  [[ $which == windows ]] || packages+=("${packages_linux[@]}")
  [[ $which == linux ]] || packages+=("${packages_windows[@]}" "${packages_sources[@]}" "${packages_wine[@]}")
  NeedPackages "${packages[@]}"
  if [[ $which != linux ]]; then
    # Beside the compiling, since it mostly waits for the network and the disk.
    (NeedPcre2; NeedWine) &
    job=$!
  fi
  if [[ $which != windows ]]; then
    BuildPreset linux-release  # which the demo and the bench run; with optimization the compiler sees more
    BuildPreset linux-sanitized
  fi
  if [[ $which != linux ]]; then
    wait "$job" || Die "the set-up of the Windows tests failed"
    BuildPreset windows-release
    BuildPreset windows-tests
  fi
  if [[ $which != windows ]]; then
    TMPDIR=$(FolderForFiles) RunTests linux-sanitized
  fi
  if [[ $which != linux ]]; then
    RunTests windows-release
    RunTests windows-tests
  fi
  if ((skipped)); then
    echo "$passed passed, $failed failed, $skipped skipped"
  else
    echo "$passed passed, $failed failed"
  fi
  ((failed == 0))
}

# ./dev bench
RunBench() {
  NeedPackages "${packages_linux[@]}" "${packages_bench[@]}"
  BuildLinux
  [[ -x $project/bench/run ]] || Die "bench/run isn't there yet"
  exec "$project/bench/run" "$@"
}

# One fuzzer for `seconds`, with what it found before and a few inputs to begin with.
RunFuzzer() {
  local fuzzer=$1 seconds=$2 name=${1##*/} log end
  local -a corpus=("$build/fuzz/$name")
  log=$build/fuzz/$name.log
  mkdir -p "${corpus[0]}"
  [[ ! -d $project/tests/fuzz/seeds/$name ]] || corpus+=("$project/tests/fuzz/seeds/$name")
  Say "$name: $seconds s; what it finds goes to build/fuzz/"
  # A crash ends the loop: its input lies beside the corpus.
  "$fuzzer" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
    -artifact_prefix="$build/fuzz/$name-" "${corpus[@]}" >"$log" 2>&1 </dev/null || {
    tail -n 40 "$log" >&2
    Die "$name found a fault; see $log"
  }
  end=$(grep -E '^Done [0-9]+ runs' "$log") || Die "$name didn't come to its end; see $log"
  echo "$name: $end"
}

# ./dev fuzz [MINUTES]: all fuzzers, that long together, as many at once as there are processors.
RunFuzz() {
  local minutes=${1-1} fuzzer seconds running=0 status=0
  local -a fuzzers
  [[ $minutes =~ ^[1-9][0-9]*$ ]] || Die "usage: ./dev fuzz [MINUTES]"
  NeedPackages "${packages_linux[@]}" "${packages_fuzz[@]}"
  BuildPreset linux-fuzz fuzzers
  fuzzers=("$build"/linux-fuzz/tests/fuzz/*_fuzzer)
  seconds=$((minutes * 60 / ${#fuzzers[@]}))
  for fuzzer in "${fuzzers[@]}"; do
    if ((running == $(nproc))); then
      wait -n || status=1
      running=$((running - 1))
    fi
    (RunFuzzer "$fuzzer" "$seconds") &
    running=$((running + 1))
  done
  for (( ; running > 0; running--)); do
    wait -n || status=1
  done
  ((status == 0)) || Die "not all fuzzers came to their end"
}

# ./dev setup: all that any command needs.
RunSetup() {
  NeedPackages "${packages_linux[@]}" "${packages_windows[@]}" "${packages_sources[@]}" "${packages_wine[@]}" \
    "${packages_tests[@]}" "${packages_bench[@]}" "${packages_fuzz[@]}" "${packages_lint[@]}"
  NeedPcre2
  NeedWine
  Say "all set up"
}
