#include "support/log_text.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

LogPlace::LogPlace() : path(place / "Norvane.log"), writer(std::make_unique<ApplicationLog>()) {}

bool LogPlace::Write(const wchar_t* section, const std::string& message) {
  return writer->Write(path.CStr(), section, Wide(message).CStr(), {2024, 3, 0, 5, 12, 0, 0, 0});
}

void LogPlace::Fill(const std::string& text) { WriteBytes(path.CStr(), Utf16(text)); }

std::string LogPlace::Text() const {
  const std::string bytes = ReadBytes(path.CStr());
  if (bytes.size() < 2 || bytes.substr(0, 2) != "\xFF\xFE") {
    ADD_FAILURE() << "the log has no mark";
    return {};
  }
  std::string units = bytes.substr(2) + std::string(2, '\0');
  return Utf8(reinterpret_cast<const wchar_t*>(units.data()));
}

std::string LogPlace::TextWithoutBlankLines() const {
  std::istringstream lines(Text());
  std::string kept;
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] != ' ' || line.find_first_not_of(" \r") != std::string::npos)
      kept += line + "\n";
  }
  return kept;
}

std::string LogPlace::Utf16(const std::string& text) {
  WString wide = Wide(text);
  std::string bytes = "\xFF\xFE";
  bytes.append(reinterpret_cast<const char*>(wide.CStr()),
               static_cast<size_t>(wide.Length()) * sizeof(wchar_t));
  return bytes;
}

std::string LogPlace::Lines(size_t count, const std::string& text) {
  std::string lines;
  for (size_t i = 0; i < count; i++)
    lines += "2023/01/01 00:00:00:000=" + text + " " + std::to_string(i) + "\r\n";
  return lines;
}

std::string LogPlace::Stamp(int milliseconds) {
  char text[40];
  std::snprintf(text, sizeof(text), "2024/03/05 12:%02d:%02d:%03d", milliseconds / 60000,
                milliseconds / 1000 % 60, milliseconds % 1000);
  return text;
}

size_t LogPlace::Count(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) count++;
  return count;
}
