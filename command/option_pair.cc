#include "option_pair.h"

#include "utf8_text.h"

OptionPair SplitPair(const std::string& text) {
  OptionPair pair;
  const size_t sign = text.find('=');
  pair.hasTo = sign != std::string::npos;
  pair.from = FromUtf8Text(text.substr(0, sign));
  if (pair.hasTo) pair.to = FromUtf8Text(text.substr(sign + 1));
  return pair;
}
