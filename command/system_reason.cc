#include "system_reason.h"

#include "foundation/system_text.h"
#include "utf8_text.h"

std::string SystemReason(uint32_t error) { return Escaped(SystemText(error)); }
