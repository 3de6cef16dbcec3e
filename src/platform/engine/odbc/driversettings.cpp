#include "platform/engine/odbc/driversettings.h"

#include <odbcinst.h>

#include <algorithm>
#include <array>
#include <map>
#include <span>

#include "platform/engine/odbc/connectstring.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

/// What is added for a driver, unless one of some words is there. The first file of words is the connect string.
struct Setting {
    std::string_view library;  ///< part of the driver's file name
    std::string_view text;
    std::array<const char*, 8> words;  ///< with which the user has said it
    bool encrypts = false;             ///< a server that cannot refuses the connection
};

constexpr Setting kSettings[] = {
    {.library = "psqlodbc", .text = "Protocol=7.4-0", .words = {"Protocol", "A1"}},
    {.library = "psqlodbc", .text = "SSLmode=prefer", .words = {"SSLmode", "CA"}},
    {.library = "maodbc",
     .text = "FORCETLS=1",
     .words = {"FORCETLS", "TLSVERSION", "SSLVERIFY", "SSLCA", "SSLCAPATH", "SSLCERT", "SSLKEY", "TLSPEERFP"},
     .encrypts = true}};

/// An entry of odbc.ini or odbcinst.ini; empty when it is not there.
std::string entry(const std::string& section, const char* name, const char* file) {
    std::array<char, 1024> text{};
    const int length =
        SQLGetPrivateProfileString(section.c_str(), name, "", text.data(), static_cast<int>(text.size()), file);
    return {text.data(), static_cast<std::size_t>(std::max(length, 0))};
}

/// The file that a driver's name stands for, or the name where it is a file's itself.
std::string libraryOf(const std::string& driver) {
    std::string library = driver.empty() ? std::string() : entry(driver, "Driver", "odbcinst.ini");
    return library.empty() ? driver : library;
}

}  // namespace

DriverSettings::DriverSettings(std::string_view text) : connectString(text) {
    std::map<std::string, std::string> said;
    forEachPart(text, [&](std::string_view key, std::string_view value) {
        if (value.size() > 1 && value.front() == '{' && value.back() == '}') value = value.substr(1, value.size() - 2);
        said.emplace(upperCase(key), value);
    });
    const std::string source = said["DSN"];
    const auto given = [&](const char* word) {
        return said.contains(upperCase(word)) || (!source.empty() && !entry(source, word, "odbc.ini").empty());
    };
    std::string driver = said["DRIVER"];
    if (driver.empty() && !source.empty()) driver = entry(source, "Driver", "odbc.ini");
    const std::string library = libraryOf(driver);
    const std::string before = connectString;
    for (const Setting& setting : kSettings) {
        const auto hasSaid = [&](const char* word) { return word != nullptr && given(word); };
        if (library.find(setting.library) == std::string::npos || std::ranges::any_of(setting.words, hasSaid)) continue;
        if (setting.encrypts) unencrypted = before;
        if (!connectString.empty() && connectString.back() != ';') connectString += ';';
        connectString += setting.text;
    }
}

}  // namespace kolmera
