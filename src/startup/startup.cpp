#include "startup/startup.h"

#include <limits>
#include <optional>
#include <system_error>

#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "platform/locale.h"
#include "startup/folders.h"
#include "startup/inifile.h"

namespace kolmera {

namespace {

// Records of the suite's settings files.
constexpr int kKlientDataMapp = 2;
constexpr int kDorvikStandardFöretag = 2;
constexpr int kDorvikTypsnittTahoma = 9;
constexpr int kDorvikInloggningsLäge = 11;

/// A folder as written in DVKlient.ini: one that is relative means a folder below the program's.
std::string belowProgram(const std::string& folder, const std::string& programMapp) {
    const bool absolute = folder.starts_with('/') || folder.starts_with('\\') || folder.find(':') == 1;
    return absolute ? folder : programMapp + folder;
}

/// A folder that ends in a separator, as it can be entered (a share path below its drive), or nothing.
std::optional<std::string> entered(const std::string& folder, const DriveMap& drives) {
    if (folderReachable(folder, drives)) return folder;
    std::string below = TillUNCEnhet(folder, drives);
    if (folderReachable(below, drives)) return below;
    return std::nullopt;
}

/// The data folder that DVKlient.ini names, as it can be entered, or nothing.
std::optional<std::string> namedDataFolder(const std::filesystem::path& klientIni, const StartState& state) {
    const std::string value = iniValue(klientIni, kKlientDataMapp);
    if (value.empty()) return std::nullopt;
    std::string folder = belowProgram(value, state.ProgramMapp);
    LäggTillSnedstreck(folder);
    return entered(folder, state.drives);
}

/// "True", "False" or a number, non-zero being true; nothing for any other text.
std::optional<bool> readBoolean(std::string_view value, const Locale& locale) {
    if (equalNoCase(value, "True")) return true;
    if (equalNoCase(value, "False")) return false;
    const std::optional<double> number = locale.parseNumber(value);
    if (!number) return std::nullopt;
    return *number != 0;
}

std::optional<std::int16_t> readMode(std::string_view value) {
    const double rounded = roundHalfEven(leadingNumber(value));
    constexpr std::numeric_limits<std::int16_t> range;
    if (rounded < range.min() || rounded > range.max()) return std::nullopt;
    return static_cast<std::int16_t>(rounded);
}

}  // namespace

void openTexts(const StartState& state, LanguageTexts& texts) {
    std::string server = state.settings.get("Sökvägar", "Server");
    if (!server.empty()) LäggTillSnedstreck(server);
    const std::optional<std::string> folder = entered(server, state.drives);
    texts.ÖppnaSpråk(state.programFolder(), folder ? state.drives.resolve(*folder, {}) : std::filesystem::path());
}

void LäsKlientIni(StartState& state, std::string programFolder) {
    LäggTillSnedstreck(programFolder);
    state.ProgramMapp = std::move(programFolder);
    state.EjKlientIni = true;
    state.DataMapp = state.ProgramMapp;
    const std::filesystem::path klientIni = state.drives.resolve("DVKlient.ini", state.programFolder());
    std::error_code error;
    if (!std::filesystem::exists(klientIni, error)) return;
    PassedOverSilently passedOver;
    attempt(passedOver, "LäsKlientIni", [&] {
        if (std::optional<std::string> folder = namedDataFolder(klientIni, state)) {
            state.DataMapp = *std::move(folder);
            state.EjKlientIni = false;
        }
    });
}

void LäsDorvikIni(StartState& state) {
    const std::filesystem::path file = state.drives.resolve("DORVIK.INI", state.dataFolder());
    PassedOverSilently passedOver;
    attempt(passedOver, "LäsDorvikIni", [&] {
        state.StandardFöretag = upperCase(iniValue(file, kDorvikStandardFöretag));
        const std::string font = iniValue(file, kDorvikTypsnittTahoma);
        state.TypsnittTahoma = font.empty() || readBoolean(font, state.locale).value_or(state.TypsnittTahoma);
        state.InloggningsLäge = readMode(iniValue(file, kDorvikInloggningsLäge)).value_or(state.InloggningsLäge);
    });
}

void startUp(StartState& state, LanguageTexts& texts, const std::string& programFolder, const SignIn& signIn,
             const std::filesystem::path& dataFolder) {
    state.Citattecken = '"';
    LäsKlientIni(state, programFolder);
    if (!dataFolder.empty()) {
        state.DataMapp = (dataFolder / "").string();
        state.EjKlientIni = false;
    }
    openTexts(state, texts);
    state.Språkkod = LanguageTexts::NormaliseraSpråk(state.settings.get("Start", "Lang", "SE"));
    texts.InitSpråkOrd(state.Språkkod);
    state.helpFile = state.ProgramMapp + "Dorvik.chm";
    if (!state.EjKlientIni) {
        LäsDorvikIni(state);
        if (signIn) signIn(state);
    }
    state.Decimaltecken = state.locale.decimalSign();
}

}  // namespace kolmera
