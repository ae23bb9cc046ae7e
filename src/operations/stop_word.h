// stop_word.h
//
// How a long look at a selection, which may be a stranger's and as long as a file can be, is told to end.
#pragma once
#include <windows.h>

#include <atomic>

// 1 asks for the end. What a function gives then is of no use: whoever asked knows of it.
using StopWord = std::atomic<LONG>;

// `stop` is null where nobody can ask.
inline bool IsStopAsked(const StopWord* stop) {
  return stop != nullptr && stop->load(std::memory_order_relaxed) != 0;
}
