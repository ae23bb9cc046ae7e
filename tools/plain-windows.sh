#!/usr/bin/env bash
# Checks that a program file starts on a Windows 7 with nothing installed: tools/plain-windows.sh PROGRAM
# It is a 32-bit console program below 4 MiB, with version and manifest, and imports nothing that a plain
# system lacks.
set -euo pipefail
program=${1:?usage: plain-windows.sh PROGRAM}
status=0
Wrong() { echo "$(basename "$program"): $*"; status=1; }

# The libraries that every Windows since 7 has and that a console program of ours has any business with.
libraries=' kernel32.dll advapi32.dll user32.dll shell32.dll shlwapi.dll ole32.dll rpcrt4.dll netapi32.dll '
libraries+=' userenv.dll wtsapi32.dll psapi.dll msvcrt.dll powrprof.dll '

# What newer systems brought. A static import of one of these and the program doesn't start at all.
newer='^(CopyFile2|CreateFile2|CreateFileMappingFromApp|MapViewOfFileFromApp|GetSystemTimePreciseAsFileTime'
newer+='|WaitOnAddress|WakeByAddress(All|Single)|GetTempPath2[AW]|[GS]etThreadDescription|PathCch.*|PathAllocC.*'
newer+='|GetOverlappedResultEx|IsWow64Process2|GetProcessInformation|SetProcessInformation|SetThreadInformation'
newer+='|GetPackage.*|GetCurrentPackage.*|OpenProcessMitigation.*|[GS]etProcessMitigationPolicy|PrefetchVirtualMemory'
newer+='|GetDpiFor.*|SetProcessDpiAwarenessContext|SetThreadDpiAwarenessContext|AreDpiAwarenessContextsEqual'
newer+='|CompareObjectHandles|DiscardVirtualMemory|VirtualAlloc2|MapViewOfFile3|CreateProfileEx|LoadPackagedLibrary'
newer+='|CreateDirectory2[AW]|DeleteFile2[AW]|RemoveDirectory2[AW]|GetFileInformationByName|_o_.*|RegLoadAppKey2.*)$'

header=$(objdump -p "$program")
grep -q 'file format pei-i386' <<<"$header" || Wrong "not a 32-bit program"
grep -Eq '^Subsystem.*0*3[[:space:]]' <<<"$header" || Wrong "not a console program"
grep -Eq '^MajorSubsystemVersion[[:space:]]+[4-6]$' <<<"$header" || Wrong "asks for a newer Windows than 7"
size=$(stat -c %s "$program")
((size < 4 * 1024 * 1024)) || Wrong "$size bytes, which is not below 4 MiB"
grep -qa 'level="asInvoker"' "$program" || Wrong "no manifest that asks for the caller's rights"
version=$(sed -n 's/^#define NORVANE_VERSION_TEXT "\(.*\)"$/\1/p' "$(dirname "$0")/../src/resources/version.h")
# As it stands in the resources: two bytes a character.
wide=$(sed 's/[0-9]/&\\x00/g; s/\./[.]\\x00/g' <<<"$version")
LC_ALL=C grep -qaP "$wide" "$program" || Wrong "no version $version in its resources"

while IFS= read -r library; do
  [[ $libraries == *" ${library,,} "* ]] || Wrong "imports $library, which isn't on the list of libraries"
done < <(sed -n 's/^[[:space:]]*DLL Name: //p' <<<"$header" | tr -d '\r')
grep -q 'DLL Name:' <<<"$header" || Wrong "its imports could not be read"

# Lines of the import table: hint, ordinal, name.
while IFS= read -r name; do
  Wrong "imports $name, which Windows 7 doesn't have"
done < <(awk '/^The Import Tables/ { inside = 1 } /^The Export Tables|^PE File Base/ { inside = 0 }
              inside && NF >= 3 && $1 ~ /^[0-9a-f]+$/ { print $NF }' <<<"$header" | grep -E "$newer" | sort -u)
exit "$status"
