#include "space/CredentialNames.h"

#include "common/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

using namespace corvel;

namespace {

// Names are lower-cased before the tables are searched, so an entry with a capital or a
// duplicate would be a rule that silently never fires.
template <std::size_t N>
void expectLowerCaseAndUnique(const std::array<std::string_view, N>& table) {
    std::set<std::string_view> seen;
    for (const auto entry : table) {
        EXPECT_FALSE(entry.empty());
        EXPECT_EQ(std::string(entry), toLower(entry)) << entry;
        EXPECT_TRUE(seen.insert(entry).second) << "twice: " << entry;
    }
}

}  // namespace

// Any ".env." file counts, not only the listed ones; a word with no extension, or with one nobody
// listed, decides; "key" is searched as text ("keyboard.pem"), a secret word only as a whole word
// ("secretary.doc"). The public half, template and sample suffixes, logs and "public" (even beside
// "private") veto; case never matters.
TEST(CredentialNamesTest, NamesOnBothSidesOfEachRule) {
    for (const char* name : {"id_rsa",          "server-key.pem",   "my_api_key",       ".env",
                             "ID_ED25519",      ".Git-Credentials", "credentials",      "keychain-db",
                             ".env.staging",    ".ENV.Production",  "prod.p12",         "Vault.KDBX",
                             "office.ovpn",     "putty.ppk",        "release.keystore", "AuthKey_ABC123.p8",
                             "private.pem",     "keyboard.pem",     "db_password",      "db_password.bak",
                             "my-secret-notes", "github_token",     "bearer.cfg"})
        EXPECT_TRUE(CredentialNames::looksLikeCredential(name)) << name;
    for (const char* name : {".env.example",       "server.pem",        "public-key.pem",
                             "app.log.1",          "notes.txt",         "env",
                             "id_rsa.pub",         "credentials-old",   "cert.pem",
                             "private-public.pem", "id_rsa.sample",     ".env.template",
                             "server.key.dist",    "secrets.defaults",  "API_KEY.EXAMPLE",
                             "secret.1",           "password.20261102", "db_password.txt",
                             "secret.json",        "passwords.sqlite3", "access_token.log",
                             "secretary.doc",      "holiday.jpeg",      "readme"})
        EXPECT_FALSE(CredentialNames::looksLikeCredential(name)) << name;
}

// A later occurrence counts when an earlier one is glued to letters. Bytes outside ASCII stand for
// letters, down to 0x80 (the last byte of "Ѐ", U+0400).
TEST(CredentialNamesTest, ContainsWordNeedsNonLettersOnBothSides) {
    for (const char* text :
         {"secret", "my-secret-notes", "top_secret", "secret2.cfg", "a.secret", "secretary-secret", "\x7Fsecret"})
        EXPECT_TRUE(CredentialNames::containsWord("secret", text)) << text;
    for (const char* text : {"secretary", "xsecret", "secre", "secret\xC3\xA4", "\xD0\x80secret"})
        EXPECT_FALSE(CredentialNames::containsWord("secret", text)) << text;
    EXPECT_FALSE(CredentialNames::containsWord("", "anything"));
}

TEST(CredentialNamesTest, TrashFoldersMustBeWholeComponents) {
    for (const char* path : {"/Users/me/.Trash/id_rsa", "/Volumes/USB/.Trashes/501/backup/.env"})
        EXPECT_TRUE(CredentialNames::isInTrash(path)) << path;
    for (const char* path : {"/Users/me/.Trash", "/Users/me/Trash/id_rsa", "/Users/me/.Trashcan/id_rsa",
                             "/home/me/.local/share/Trash/files/id_rsa"})
        EXPECT_FALSE(CredentialNames::isInTrash(path)) << path;
    for (const char* path : {"/home/me/.local/share/Trash/files/id_rsa", "/media/me/usb/.Trash-1000/files/.env"})
        EXPECT_TRUE(CredentialNames::isInFreedesktopTrash(path)) << path;
    for (const char* path : {"/home/me/.local/share/Trash", "/home/me/.local/share/Trashy/x", "/media/me/usb/.Trash-/x",
                             "/media/me/usb/.Trash-1000x/x", "/media/me/usb/.Trash-1000"})
        EXPECT_FALSE(CredentialNames::isInFreedesktopTrash(path)) << path;
}

TEST(CredentialNamesTest, TablesAreLowerCaseWithoutDuplicates) {
    expectLowerCaseAndUnique(CredentialNames::exactNames);
    expectLowerCaseAndUnique(CredentialNames::keyExtensions);
    expectLowerCaseAndUnique(CredentialNames::templateSuffixes);
    expectLowerCaseAndUnique(CredentialNames::ignoredExtensions);
    expectLowerCaseAndUnique(CredentialNames::secretWords);
}
