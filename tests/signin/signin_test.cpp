#include "signin/signin.h"

#include <gtest/gtest.h>

#include "platform/encodings.h"
#include "platform/restrictedpath.h"
#include "startup/scramble.h"
#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

using test::TemporaryFolder;

User user(std::string sign, std::string name) {
    return {.sign = std::move(sign), .name = std::move(name), .password = {}};
}

/// The bytes of one record of the user file.
std::string record(const std::string& sign, const std::string& name, const std::string& password,
                   const std::string& flags) {
    const auto field = [](const std::string& text, std::size_t width) {
        std::string bytes = fromUtf8(text, CodePage::Windows1252);
        bytes.resize(width, ' ');
        return bytes;
    };
    std::string bytes = field(sign, 3) + field(name, 50) + scramble(field(password, 5)) + std::string(84, '\0');
    bytes += field(flags, 7);
    bytes.resize(598, ' ');
    return bytes + "\r\n";
}

std::string windowsSign(const std::vector<User>& users, const std::string& login, const std::string& fullName = {}) {
    const User* found = WindowsAnvändare(users, {.login = login, .fullName = fullName});
    return found == nullptr ? "" : found->sign;
}

TEST(SignIn, ReadsTheUserFile) {
    const TemporaryFolder folder;
    folder.write("dvuser.DVL",
                 record("aek", "Åsa Ek", "ÅÄÖ1", "JNJJJJJ") + record("BB", "Bo Berg", "", "NJNNNNN") + "cut");
    const std::vector<User> users = readUsers(folder.path());
    ASSERT_EQ(users.size(), 2u);
    EXPECT_EQ(users[0].sign, "aek");
    EXPECT_EQ(users[0].name, "Åsa Ek");
    EXPECT_EQ(users[0].password, "ÅÄÖ1");
    EXPECT_TRUE(users[0].denied && users[0].takesNoPart);
    EXPECT_EQ(users[1].password, "") << "the scrambled padding is no part of the password";
    EXPECT_FALSE(users[1].denied || users[1].takesNoPart) << "another program's flag was read";
    EXPECT_EQ(FinnsAnvändare(users), 1);
    EXPECT_EQ(FinnsAnvändare(std::span(users).subspan(1)), 0);
}

TEST(SignIn, MissingUserFileIsCreatedEmpty) {
    const TemporaryFolder folder;
    EXPECT_TRUE(readUsers(folder.path()).empty());
    EXPECT_TRUE(std::filesystem::exists(folder / "DVUser.dvl"));
}

TEST(SignIn, RecognisesTheSystemUser) {
    const struct {
        const char *fault, *recordName, *login, *fullName;
        bool recognised;
    } cases[] = {
        {"login at the beginning of the name", "annab Berg", "ANNAB", "", true},
        {"point for the blank", "Anna Berg", "anna.berg", "", true},
        {"underscore for the blank", "Anna Berg", "anna_berg", "", true},
        {"point and underscore mixed", "Anna Maria Berg", "anna.maria_berg", "", false},
        {"å for a", "Åsa Ek", "asa_ek", "", true},
        {"ä, ö and é", "Sofié Öhrn Älv", "sofie.ohrn.alv", "", true},
        {"letters counted as bytes", "Åsa Ekström", "asa.ek", "", true},
        {"ü is no letter of the rule", "Jürgen Ek", "jurgen.ek", "", false},
        {"behind the @ dropped for the point", "Anna Berg", "anna.berg@firma", "", true},
        {"behind the @ dropped also for the beginning", "annab Berg", "annab@firma", "", false},
        {"full name", "Anna Berg", "x17", "Anna Berg", true},
        {"full name at the beginning", "Anna Berg, lager", "x17", "anna berg", true},
        {"another's name", "Anders Berg", "anna.berg", "Anna Berg", false},
        {"login longer than the name", "Anna", "anna.berg", "", false},
        {"a login without a name matches everybody", "Anna Berg", "", "", false},
        {"a blank name matches a login of its domain alone", "", "@firma", "", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(windowsSign({user("XX", "Nobody"), user("AB", c.recordName)}, c.login, c.fullName),
                  c.recognised ? "AB" : "");
    }
    EXPECT_EQ(windowsSign({user("A1", "Anna Berg"), user("A2", "Anna Berg")}, "anna.berg"), "A1") << "not the first";
}

TEST(SignIn, ChecksSignPasswordAndRight) {
    std::vector<User> users = {user("AB", "Away"), user("AB", ""), user("no", ""), user("", "")};
    users[0].password = "ABC";
    users[0].takesNoPart = true;
    users[1].password = "ABC";
    users[2].password = "abc";
    users[2].denied = true;
    const struct {
        const char *fault, *sign, *password;
        SignInResult result;
    } cases[] = {
        {"typed in lower case", "ab", "abc", SignInResult::SignedIn},
        {"password of another length", "AB", "AB", SignInResult::WrongPassword},
        {"no password typed", "AB", "", SignInResult::WrongPassword},
        {"sign not known", "XX", "ABC", SignInResult::UnknownSign},
        {"blank sign is a record without one", "", "", SignInResult::UnknownSign},
        {"a stored password in lower case is typed in upper case", "NO", "abc", SignInResult::WrongPassword},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(tryToSignIn(users, c.sign, c.password), c.result);
    }
    users[2].password = "ABC";
    EXPECT_EQ(tryToSignIn(users, "NO", "ABC"), SignInResult::NoRight);
    EXPECT_EQ(tryToSignIn(users, "NO", "x"), SignInResult::WrongPassword) << "told of the right without a password";
    users.erase(users.begin() + 1);
    EXPECT_EQ(tryToSignIn(users, "AB", "ABC"), SignInResult::UnknownSign) << "record that takes no part";
}

TEST(SignIn, AsksInTheFormOnlyWhenItMust) {
    const std::string denied = record("XX", "Xerxes", "X", "JNJJJJN");
    const std::string anna = record("AB", "Anna Berg", "A", "JJJJJJN");
    const struct {
        const char* fault;
        std::string users;
        std::int16_t mode;
        const char* login;
        const char* signature;  ///< "form" when it is shown
    } cases[] = {
        {"asked though everybody may use the program", anna, 0, "", ""},
        {"denied user overlooked whose record has lost its line end", anna + denied.substr(0, 598), 0, "", "form"},
        {"asked though sign-in is off", denied, 6610, "", "DV"},
        {"known system user asked", denied + anna, 6611, "anna.berg", "AB"},
        {"unknown system user let in", denied + anna, 6611, "bo", "form"},
        {"denied system user let in", denied + anna, 6611, "xerxes", "form"},
        {"system user taken in another mode", denied + anna, 6612, "anna.berg", "form"},
        {"default mode", denied, 0, "", "form"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const TemporaryFolder folder;
        folder.write("DVUser.dvl", c.users);
        StartState state(SettingsStore(folder / "settings.ini"), Locale(Locale::Kind::Swedish));
        state.DataMapp = (folder.path() / "").string();
        state.InloggningsLäge = c.mode;
        signIn(state, {.login = c.login, .fullName = ""}, [&](std::span<const User>) { state.Signatur = "form"; });
        EXPECT_EQ(state.Signatur, c.signature);
    }
}

TEST(SignIn, LetsNobodyInWithoutAReadableUserFile) {
    const TemporaryFolder folder;
    folder.write("DVUser.dvl", record("XX", "Xerxes", "X", "JNJJJJN"));
    StartState state(SettingsStore(folder / "settings.ini"), Locale(Locale::Kind::Swedish));
    state.DataMapp = (folder.path() / "").string();
    const test::RestrictedPath closed(folder / "DVUser.dvl", 0);
    EXPECT_THROW(signIn(state, {.login = "anna", .fullName = ""}, [](std::span<const User>) {}), PlatformError);
}

}  // namespace
}  // namespace kolmera
