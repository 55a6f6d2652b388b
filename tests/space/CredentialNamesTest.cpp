#include "space/CredentialNames.h"

#include "common/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

using namespace corvel;

namespace {

struct NameRow {
    const char* name;
    bool credential;
};

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

TEST(CredentialNamesTest, NamesOnBothSidesOfEachRule) {
    const NameRow rows[] = {
        {"id_rsa", true},
        {".env.example", false},
        {"server.pem", false},
        {"server-key.pem", true},
        {"public-key.pem", false},
        {"app.log.1", false},
        {"notes.txt", false},
        {"my_api_key", true},
        {".env", true},
        {"ID_ED25519", true},
        {".Git-Credentials", true},
        {"credentials", true},
        {"keychain-db", true},
        {".env.staging", true},  // any ".env." file, not only the listed ones
        {".ENV.Production", true},
        {"env", false},
        {"id_rsa.pub", false},  // the public half
        {"credentials-old", false},
        {"prod.p12", true},
        {"Vault.KDBX", true},
        {"office.ovpn", true},
        {"putty.ppk", true},
        {"release.keystore", true},
        {"AuthKey_ABC123.p8", true},
        {"private.pem", true},
        {"cert.pem", false},
        {"private-public.pem", false},  // "public" vetoes even with "private" in the name
        {"keyboard.pem", true},         // "key" is searched as text here, not as a word
        {"id_rsa.sample", false},
        {".env.template", false},
        {"server.key.dist", false},
        {"secrets.defaults", false},
        {"API_KEY.EXAMPLE", false},
        {"secret.1", false},
        {"password.20261102", false},
        {"db_password.txt", false},
        {"secret.json", false},
        {"passwords.sqlite3", false},
        {"access_token.log", false},
        {"db_password", true},      // no extension: the word decides
        {"db_password.bak", true},  // an extension nobody listed does not silence it
        {"my-secret-notes", true},
        {"secretary.doc", false},  // not a whole word
        {"github_token", true},
        {"bearer.cfg", true},
        {"holiday.jpeg", false},
        {"readme", false},
    };
    for (const auto& row : rows) EXPECT_EQ(CredentialNames::looksLikeCredential(row.name), row.credential) << row.name;
}

TEST(CredentialNamesTest, ContainsWordNeedsNonLettersOnBothSides) {
    const std::pair<const char*, bool> rows[] = {
        {"secret", true},
        {"my-secret-notes", true},
        {"top_secret", true},
        {"secret2.cfg", true},
        {"a.secret", true},
        {"secretary", false},
        {"xsecret", false},
        {"secre", false},
        {"secretary-secret", true},  // a later occurrence counts when an earlier one is glued to letters
        // Bytes outside ASCII stand for letters, down to 0x80 (the last byte of "Ѐ", U+0400).
        {"secret\xC3\xA4", false},
        {"\xD0\x80secret", false},
        {"\x7Fsecret", true},
    };
    for (const auto& [text, found] : rows) EXPECT_EQ(CredentialNames::containsWord("secret", text), found) << text;
    EXPECT_FALSE(CredentialNames::containsWord("", "anything"));
}

TEST(CredentialNamesTest, TrashFoldersMustBeWholeComponents) {
    const std::pair<const char*, bool> finder[] = {
        {"/Users/me/.Trash/id_rsa", true},     {"/Volumes/USB/.Trashes/501/backup/.env", true},
        {"/Users/me/.Trash", false},           {"/Users/me/Trash/id_rsa", false},
        {"/Users/me/.Trashcan/id_rsa", false}, {"/home/me/.local/share/Trash/files/id_rsa", false},
    };
    for (const auto& [path, inTrash] : finder) EXPECT_EQ(CredentialNames::isInTrash(path), inTrash) << path;
    const std::pair<const char*, bool> freedesktop[] = {
        {"/home/me/.local/share/Trash/files/id_rsa", true},
        {"/media/me/usb/.Trash-1000/files/.env", true},
        {"/home/me/.local/share/Trash", false},
        {"/home/me/.local/share/Trashy/x", false},
        {"/media/me/usb/.Trash-/x", false},
        {"/media/me/usb/.Trash-1000x/x", false},
        {"/media/me/usb/.Trash-1000", false},
    };
    for (const auto& [path, inTrash] : freedesktop)
        EXPECT_EQ(CredentialNames::isInFreedesktopTrash(path), inTrash) << path;
}

TEST(CredentialNamesTest, TablesAreLowerCaseWithoutDuplicates) {
    expectLowerCaseAndUnique(CredentialNames::exactNames);
    expectLowerCaseAndUnique(CredentialNames::keyExtensions);
    expectLowerCaseAndUnique(CredentialNames::templateSuffixes);
    expectLowerCaseAndUnique(CredentialNames::ignoredExtensions);
    expectLowerCaseAndUnique(CredentialNames::secretWords);
}
