// Recognises files that look like secrets by their name alone; contents are never read. The
// space scanner uses it to list credential-like files lying in the Trash, so that nobody empties
// the only copy of a key without noticing.
//
//   CredentialNames::looksLikeCredential("id_ed25519");         // true
//   CredentialNames::looksLikeCredential(".env.example");       // false: a template
//   CredentialNames::looksLikeCredential("db_password.txt");    // false: text files are ignored
//   CredentialNames::containsWord("secret", "my-secret-notes"); // true; "secretary" is not
#pragma once

#include <array>
#include <string_view>

namespace corvel::CredentialNames {

// Lower-case names that are credentials whatever folder they lie in.
inline constexpr std::array<std::string_view, 14> exactNames{
    ".env", ".env.local", ".env.production", ".env.development", "id_rsa", "id_dsa", "id_ecdsa",
    "id_ed25519", ".netrc", ".npmrc", ".pypirc", ".git-credentials", "credentials", "keychain-db",
};

// Extensions of key stores and private keys.
inline constexpr std::array<std::string_view, 9> keyExtensions{
    "key", "p12", "pfx", "p8", "keystore", "jks", "kdbx", "ovpn", "ppk",
};

// A name ending like this is a template that people commit on purpose.
inline constexpr std::array<std::string_view, 5> templateSuffixes{
    ".example", ".sample", ".template", ".dist", ".defaults",
};

// Source, documents, media, archives and databases: harmless however the name reads.
inline constexpr std::array<std::string_view, 58> ignoredExtensions{
    "py",   "pyi",    "pyc",     "swift",  "js",     "mjs",  "cjs",  "ts",   "tsx",  "jsx",
    "go",   "rs",     "java",    "kt",     "rb",     "php",  "c",    "h",    "m",    "cpp",
    "md",   "txt",    "html",    "css",    "json",   "yml",  "yaml", "map",  "snap", "png",
    "jpg",  "jpeg",   "gif",     "svg",    "ico",    "pdf",  "gz",   "zip",  "tgz",  "a",
    "so",   "dylib",  "o",       "db",     "sqlite", "sqlite3", "db-shm", "db-wal", "woff", "woff2",
    "ttf",  "mp4",    "mov",     "lock",   "log",    "sql",  "mts",  "cts",
};

// Words that betray a secret when they occur as whole words in a name.
inline constexpr std::array<std::string_view, 18> secretWords{
    "password",  "passwd",     "secret",     "credential",   "private_key", "privatekey",
    "private-key", "apikey",   "api_key",    "access_key",   "master_key",  "database_url",
    "auth_token", "access_token", "api_token", "github_token", "gh_token",  "bearer",
};

// Whether a file name (not a path) looks like a credential. Case does not matter.
bool looksLikeCredential(std::string_view name);

// Whether a path lies in a Finder trash: it contains "/.Trash/" or "/.Trashes/".
bool isInTrash(std::string_view path);

// Whether a path lies in a freedesktop trash, where Linux desktops keep deleted files: the home
// trash (".../.local/share/Trash/...") or a volume's own (".../.Trash-1000/...").
bool isInFreedesktopTrash(std::string_view path);

// Whether `word` occurs in `text` with no letter right before or after it. Digits, punctuation,
// "_", "-", "." and the ends of the text all separate words; a byte outside ASCII counts as a
// letter, since accented letters are what usually stands there in a name.
bool containsWord(std::string_view word, std::string_view text);

}  // namespace corvel::CredentialNames
