#include "space/CredentialNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

using namespace corvel;

namespace {

struct NameCase {
    const char* name;
    bool expected;
};

void expectNames(std::initializer_list<NameCase> cases) {
    for (const auto& c : cases)
        EXPECT_EQ(CredentialNames::looksLikeCredential(c.name), c.expected) << "name: " << c.name;
}

template <std::size_t N>
void expectLowerCaseAndUnique(const std::array<std::string_view, N>& table, const char* what) {
    std::set<std::string_view> seen;
    for (const auto entry : table) {
        EXPECT_FALSE(entry.empty()) << what;
        EXPECT_TRUE(std::none_of(entry.begin(), entry.end(), [](char c) { return c >= 'A' && c <= 'Z'; }))
            << what << " entry is not lower-case: " << entry;
        EXPECT_TRUE(seen.insert(entry).second) << what << " entry twice: " << entry;
    }
}

}  // namespace

TEST(CredentialNamesTest, RecognisesTheDocumentedExamples) {
    expectNames({
        {"id_rsa", true},
        {".env.example", false},
        {"server.pem", false},
        {"server-key.pem", true},
        {"public-key.pem", false},
        {"app.log.1", false},
        {"notes.txt", false},
        {"my_api_key", true},
    });
}

TEST(CredentialNamesTest, ExactNamesAndEnvironmentFilesMatchInAnyCase) {
    expectNames({
        {".env", true},
        {"ID_ED25519", true},
        {".Git-Credentials", true},
        {"credentials", true},
        {"keychain-db", true},
        {".env.staging", true},    // any ".env." file, not only the listed ones
        {".ENV.Production", true},
        {"env", false},
        {"id_rsa.pub", false},     // the public half
        {"credentials-old", false},
    });
}

TEST(CredentialNamesTest, KeyStoreExtensionsAndPrivatePemFiles) {
    expectNames({
        {"prod.p12", true},
        {"Vault.KDBX", true},
        {"office.ovpn", true},
        {"putty.ppk", true},
        {"release.keystore", true},
        {"AuthKey_ABC123.p8", true},
        {"private.pem", true},
        {"cert.pem", false},
        {"private-public.pem", false},  // "public" vetoes even with "private" in the name
        {"keyboard.pem", true},          // "key" is searched as text here, not as a word
    });
}

TEST(CredentialNamesTest, TemplateSuffixesWinOverEveryOtherRule) {
    expectNames({
        {"id_rsa.sample", false},
        {".env.template", false},
        {"server.key.dist", false},
        {"secrets.defaults", false},
        {"API_KEY.EXAMPLE", false},
    });
}

TEST(CredentialNamesTest, DigitExtensionsAndIgnoredExtensionsSilenceSecretWords) {
    expectNames({
        {"secret.1", false},
        {"password.20261102", false},
        {"db_password.txt", false},
        {"secret.json", false},
        {"passwords.sqlite3", false},
        {"access_token.log", false},
        {"db_password", true},      // no extension: the word decides
        {"db_password.bak", true},  // an extension nobody listed does not silence it
        {"my-secret-notes", true},
        {"secretary.doc", false},   // not a whole word
        {"github_token", true},
        {"bearer.cfg", true},
        {"holiday.jpeg", false},
        {"readme", false},
    });
}

TEST(CredentialNamesTest, ContainsWordNeedsNonLettersOnBothSides) {
    EXPECT_TRUE(CredentialNames::containsWord("secret", "secret"));
    EXPECT_TRUE(CredentialNames::containsWord("secret", "my-secret-notes"));
    EXPECT_TRUE(CredentialNames::containsWord("secret", "top_secret"));
    EXPECT_TRUE(CredentialNames::containsWord("secret", "secret2.cfg"));
    EXPECT_TRUE(CredentialNames::containsWord("secret", "a.secret"));
    EXPECT_FALSE(CredentialNames::containsWord("secret", "secretary"));
    EXPECT_FALSE(CredentialNames::containsWord("secret", "xsecret"));
    EXPECT_FALSE(CredentialNames::containsWord("secret", "secre"));
    EXPECT_FALSE(CredentialNames::containsWord("", "anything"));
    // A later occurrence counts when an earlier one is glued to letters.
    EXPECT_TRUE(CredentialNames::containsWord("secret", "secretary-secret"));
    // Bytes outside ASCII stand for letters ("geheimsecretä").
    EXPECT_FALSE(CredentialNames::containsWord("secret", "secret\xC3\xA4"));
}

TEST(CredentialNamesTest, FinderTrashNeedsTheFolderAsAComponent) {
    EXPECT_TRUE(CredentialNames::isInTrash("/Users/me/.Trash/id_rsa"));
    EXPECT_TRUE(CredentialNames::isInTrash("/Volumes/USB/.Trashes/501/backup/.env"));
    EXPECT_FALSE(CredentialNames::isInTrash("/Users/me/.Trash"));
    EXPECT_FALSE(CredentialNames::isInTrash("/Users/me/Trash/id_rsa"));
    EXPECT_FALSE(CredentialNames::isInTrash("/Users/me/.Trashcan/id_rsa"));
    EXPECT_FALSE(CredentialNames::isInTrash("/home/me/.local/share/Trash/files/id_rsa"));
}

TEST(CredentialNamesTest, FreedesktopTrashInTheHomeAndOnVolumes) {
    EXPECT_TRUE(CredentialNames::isInFreedesktopTrash("/home/me/.local/share/Trash/files/id_rsa"));
    EXPECT_TRUE(CredentialNames::isInFreedesktopTrash("/media/me/usb/.Trash-1000/files/.env"));
    EXPECT_FALSE(CredentialNames::isInFreedesktopTrash("/home/me/.local/share/Trash"));
    EXPECT_FALSE(CredentialNames::isInFreedesktopTrash("/home/me/.local/share/Trashy/x"));
    EXPECT_FALSE(CredentialNames::isInFreedesktopTrash("/media/me/usb/.Trash-/x"));
    EXPECT_FALSE(CredentialNames::isInFreedesktopTrash("/media/me/usb/.Trash-1000x/x"));
    EXPECT_FALSE(CredentialNames::isInFreedesktopTrash("/media/me/usb/.Trash-1000"));
}

// Names are lower-cased before the tables are searched, so an entry with a capital or a
// duplicate would be a rule that silently never fires.
TEST(CredentialNamesTest, TablesAreLowerCaseWithoutDuplicates) {
    expectLowerCaseAndUnique(CredentialNames::exactNames, "exactNames");
    expectLowerCaseAndUnique(CredentialNames::keyExtensions, "keyExtensions");
    expectLowerCaseAndUnique(CredentialNames::templateSuffixes, "templateSuffixes");
    expectLowerCaseAndUnique(CredentialNames::ignoredExtensions, "ignoredExtensions");
    expectLowerCaseAndUnique(CredentialNames::secretWords, "secretWords");
}
