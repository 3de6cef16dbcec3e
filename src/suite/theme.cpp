#include "suite/theme.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace kolmera {
namespace {

constexpr std::string_view kRoot = "HKEY_CURRENT_USER";
constexpr std::string_view kThemeManager = "Software\\Microsoft\\Windows\\CurrentVersion\\ThemeManager\\";

/// One colour scheme. What depends on the platform's version or on its own colours is filled in behind the choice.
struct Scheme {
    std::string_view name;
    Colour caption;
    std::array<Colour, 5> colours;
    std::array<std::int16_t, 3> pictures;
};

constexpr Scheme kSchemes[] = {
    {"NormalColor",
     {0, 84, 227},
     {{{127, 157, 185}, {182, 207, 248}, {77, 97, 133}, {59, 97, 156}, {}}},
     {0, 205, 208}},
    {"HomeStead",
     {139, 161, 105},
     {{{164, 185, 127}, {214, 223, 201}, {91, 107, 75}, {96, 128, 88}, {164, 185, 127}}},
     {202, 206, 209}},
    {"Metallic",
     {192, 192, 192},
     {{{165, 172, 178}, {236, 236, 241}, {63, 61, 61}, {124, 124, 148}, {165, 172, 178}}},
     {203, 207, 210}},
};
constexpr const Scheme& kBlue = kSchemes[0];
constexpr Colour kOtherColour4{59, 97, 156};
constexpr std::array<std::int16_t, 3> kOtherPictures{203, 207, 210};

Colour& numbered(Theme& theme, int number) { return theme.colours[static_cast<std::size_t>(number) - 1]; }

void chooseOther(Theme& theme, const DesktopFacts& desktop) {
    const Colour inactiveCaption = desktop.systemColour(SystemColour::InactiveCaption);
    numbered(theme, 1) = inactiveCaption;
    numbered(theme, 2) = desktop.systemColour(SystemColour::InactiveCaptionText);
    numbered(theme, 3) = desktop.systemColour(SystemColour::ButtonText);
    numbered(theme, 4) = kOtherColour4;
    numbered(theme, 5) = inactiveCaption;
    theme.pictures = kOtherPictures;
}

void completeBlue(Theme& theme, const DesktopFacts& desktop) {
    if (theme.ÄrVista) {
        numbered(theme, 5) = numbered(theme, 6) = {152, 178, 207};
        numbered(theme, 7) = {211, 223, 244};
        theme.pictures[0] = desktop.furtherDisplayOption ? 222 : 220;
    } else {
        numbered(theme, 5) = desktop.systemColour(SystemColour::InactiveBorder);
        numbered(theme, 6) = {156, 177, 214};
        numbered(theme, 7) = {182, 207, 248};
        theme.pictures[0] = 201;
    }
}

void chooseColours(Theme& theme, const DesktopFacts& desktop) {
    const auto* scheme = std::find_if(std::begin(kSchemes), std::end(kSchemes), [&](const Scheme& candidate) {
        return candidate.name == theme.TemaFärgnamn || candidate.caption == desktop.activeCaption;
    });
    if (scheme == std::end(kSchemes)) {
        chooseOther(theme, desktop);
        return;
    }
    std::copy(scheme->colours.begin(), scheme->colours.end(), theme.colours.begin());
    theme.pictures = scheme->pictures;
    if (scheme == &kBlue) completeBlue(theme, desktop);
}

}  // namespace

Colour BlandaFärger(Colour a, Colour b) {
    const auto mean = [](int first, int second) { return static_cast<std::uint8_t>((first + second) / 2); };
    return {mean(a.red, b.red), mean(a.green, b.green), mean(a.blue, b.blue)};
}

Theme InitXP(const DesktopFacts& desktop, cRegTool& registry) {
    Theme theme;
    theme.ÄrXP = desktop.windowsNt && (desktop.major > 5 || (desktop.major == 5 && desktop.minor >= 1));
    theme.ÄrVista = desktop.major > 5;
    if (!theme.ÄrXP) return theme;
    const auto value = [&](std::string_view name) {
        return registry.GetRegValue(kRoot, std::string(kThemeManager).append(name));
    };
    theme.HarManifest = desktop.manifestExists;
    theme.TemaAktivt = value("ThemeActive") == "1";
    if (theme.TemaAktivt) theme.TemaFärgnamn = value("ColorName");
    theme.XPStil = theme.HarManifest && theme.TemaAktivt;
    chooseColours(theme, desktop);
    return theme;
}

}  // namespace kolmera
