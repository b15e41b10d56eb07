#pragma once

#include <string>
#include <string_view>

namespace zellick {

// Punctuation that stands in a URL as it is: RFC 3986's unreserved and reserved characters.
inline constexpr std::string_view kUrlPunctuation = "-._~:/?#[]@!$&'()*+,;=";
// Only the unreserved ones: what may stand in a single path segment or query value.
inline constexpr std::string_view kUnreservedPunctuation = "-._~";

// `text` with every byte that is not an ASCII letter, digit or one of `kept` written as "%" and
// two upper-case hex digits (so UTF-8 is escaped byte by byte).
std::string percentEscaped(std::string_view text, std::string_view kept);

}  // namespace zellick
