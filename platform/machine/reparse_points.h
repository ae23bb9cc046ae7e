// reparse_points.h
//
// A symbolic link of Linux is a reparse point. Its text may be a relative path of Linux, a path of Linux
// below a drive of the machine, or a path of Windows. A link that is made here keeps the text of Windows
// ("D:\Data"), so that it can be read back; a relative one is written with slashes and works on Linux,
// too. A slash or backslash at the end marks a link to a directory, "\??\" at the beginning a junction.
// Any other reparse point is a file or directory with a tag and data in the extended attribute
// user.norvane.reparse, and FILE_ATTRIBUTE_REPARSE_POINT among its stored attributes.
#pragma once
#include <string>
#include <vector>

#include "machine/path_resolution.h"

namespace machine {

// Where a link leads, as a path of Windows. `link` is the link's own path. False if that is no place of
// this machine.
bool LinkTarget(const WindowsPath& link, const std::string& text, WindowsPath& target);

// The text of a new link.
std::string LinkText(std::u16string_view target, bool isDirectory, bool isJunction);

// Sets FILE_ATTRIBUTE_DIRECTORY of a link that leads to a directory, and gives its tag: a link's, or that
// in the extended attribute. 0 if it is no reparse point.
uint32_t DescribeReparsePoint(const Location& location, FileFacts& facts);

// The extended attribute: the tag, little endian, and the data behind it. False with errno.
bool ReadReparseData(int directory, const char* name, uint32_t& tag, std::vector<uint8_t>& data);
bool WriteReparseData(int directory, const char* name, uint32_t tag, const std::vector<uint8_t>& data);

}  // namespace machine
