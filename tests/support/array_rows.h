// array_rows.h
//
// The rows of an array of texts as UTF-8, for a test to compare.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/wstring_array.h"
#include "support/test_place.h"

inline std::vector<std::string> ArrayRows(const WStringArray& array, uint32_t most = UINT32_MAX) {
  std::vector<std::string> rows;
  for (uint32_t row = 0; row < array.count && row < most; ++row) rows.push_back(Utf8(array[row]));
  return rows;
}
