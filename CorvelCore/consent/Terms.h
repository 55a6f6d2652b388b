// The terms a person agrees to: their version, the short summary shown above the scopes, and a
// digest of the whole wording. A record keeps the digest it was made under, so any change of
// wording (a summary sentence, a scope's title or explanation) leaves earlier acceptances invalid
// and the person is asked again.
//
//   Terms::version                    // "2026-10-24.2"
//   for (const auto& sentence : Terms::summary()) show(sentence);
//   record.termsDigest == Terms::digest()
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvel::Terms {

inline constexpr std::string_view version = "2026-10-24.2";

const std::vector<std::string>& summary();

// The lines the digest is computed over, in a fixed order: the version, the summary sentences,
// then one line per scope in allCases order (id, required or optional, title, explanation).
std::vector<std::string> lines();

// The SHA-256 of lines() joined with line feeds, as 64 lower-case hexadecimal digits.
const std::string& digest();

// The digest of any list of lines by the same rule (for the terms' own digest and its tests).
std::string digestOf(const std::vector<std::string>& lines);

}  // namespace corvel::Terms
