#include "support/host_path.h"

#include "support/test_place.h"

std::string HostPath(const WString& path) { return Utf8(path); }
