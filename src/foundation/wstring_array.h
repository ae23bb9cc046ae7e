// wstring_array.h
//
// A growable array of texts.
#pragma once
#include "foundation/wstring.h"

class WStringArray {
 public:
  uint32_t count;     // rows in use
  uint32_t capacity;  // rows allocated
  WString* items;     // owned
  uint32_t changes;   // grows with each operation that changes rows or could: whoever keeps what it has
                      // found in them sees that it must look again

  WStringArray();
  WStringArray(const WStringArray&) = delete;
  WStringArray& operator=(const WStringArray&) = delete;
  ~WStringArray();

  // Makes room for the larger of both numbers and sets `count`. New rows are empty.
  void Resize(uint32_t newCount, uint32_t capacityHint = 0);

  void Add(const wchar_t* text);                   // doubles the room when it is full
  void Insert(uint32_t row, const wchar_t* text);  // rows from `row` on move down
  void Remove(uint32_t row, uint32_t rows = 1);    // rows behind them move up
  void Clear();                                    // no rows and no room

  WString& operator[](uint32_t row) {
    ++changes;
    return items[row];
  }
  const WString& operator[](uint32_t row) const { return items[row]; }
};
