// windows_version.h
//
// Which Windows this is.
#pragma once

// Windows Vista and later, which lay out their profiles in another way, as a bound between 5.2 and 6.0.
inline constexpr double kFirstNewLayout = 5.9;

// major + minor / 10, such as 5.1, 6.1, 10.0 or 11.0, exactly as these numbers are written in a source,
// so that they can be compared. 0.0 means unknown. Windows tells a program of 6.2 at most unless its
// manifest names the later systems.
double GetWindowsVersion();

// Compares up to four decimal parts, cut at "." and ",": 1 if `a` is higher, -1 if it is lower, 0 if
// they are equal. A missing part counts as 0.
int CompareVersionStrings(const wchar_t* a, const wchar_t* b);
