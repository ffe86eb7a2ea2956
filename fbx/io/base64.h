// Base64, as raw values stand in ASCII scene files.
#pragma once

#include <string>
#include <string_view>

// The bytes that `text` encodes. Characters outside the alphabet are passed over; '=' ends it.
std::string DecodeBase64(std::string_view text);
