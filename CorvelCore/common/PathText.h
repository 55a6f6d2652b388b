// Paths as text, the way every part of Velmora compares them: absolute, lexically normal, no
// trailing "/" (except the root itself). The file system is never asked; a link stays a link.
//
//   normalPath("./src/", "/home/me") == "/home/me/src"
//   joinPath("/home/me", "src") == "/home/me/src";  joinPath("/", "etc") == "/etc"
//   isWithin("/home/me/src", "/home/me") && isWithin("/home/me", "/home/me")
//   isStrictlyWithin("/home/me/src", "/home/me") && !isStrictlyWithin("/home/me", "/home/me")
#pragma once

#include <string>
#include <string_view>

namespace corvel {

// `typed` made absolute against `base` (the current folder when empty), lexically normalised,
// without a trailing "/". An empty `typed` means `base`.
std::string normalPath(std::string_view typed, std::string_view base = {});

// `folder` + "/" + `name`, without doubling the "/" after a folder that already ends in one.
std::string joinPath(std::string_view folder, std::string_view name);

// `path` is `folder` or lies below it, by whole path components ("/a/bc" is not within "/a/b").
// Both are expected in normal form; every absolute path is within "/".
bool isWithin(std::string_view path, std::string_view folder);

// As isWithin, but the folder itself does not count.
bool isStrictlyWithin(std::string_view path, std::string_view folder);

// The last path component ("/a/b" gives "b", "/" gives "/").
std::string lastComponent(std::string_view path);

}  // namespace corvel
