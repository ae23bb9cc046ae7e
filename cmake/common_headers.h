// common_headers.h
//
// Compiled once for many sources. Each source includes what it uses all the same: the static checks and the
// fuzzers' build do without this.
#pragma once
#include "no_wide_functions.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>
