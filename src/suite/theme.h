#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "suite/cregtool.h"

namespace kolmera {

struct Colour {
    std::uint8_t red = 0, green = 0, blue = 0;
    bool operator==(const Colour&) const = default;
};

/// Per channel the whole-number mean of the two; halves are dropped.
Colour BlandaFärger(Colour a, Colour b);

/// Numbers of the desktop's own colours, as far as the theme table names them.
enum class SystemColour { InactiveCaption = 3, InactiveBorder = 11, ButtonText = 18, InactiveCaptionText = 19 };

/// What InitXP has to know of the desktop.
struct DesktopFacts {
    bool windowsNt = false;  ///< on any other platform the forms use the palette
    int major = 0, minor = 0;
    bool manifestExists = false;  ///< "<program>.exe.manifest" in ProgramMapp
    bool furtherDisplayOption = false;
    Colour activeCaption;
    std::function<Colour(SystemColour)> systemColour = [](SystemColour) { return Colour{}; };
};

/// The theme state, set once at start-up. Colours and pictures are numbered from 1; a picture 0 is none.
struct Theme {
    bool ÄrXP = false;
    bool ÄrVista = false;
    bool HarManifest = false;
    bool TemaAktivt = false;
    std::string TemaFärgnamn;
    bool XPStil = false;  ///< the forms use the theme colours

    std::array<Colour, 7> colours{};
    std::array<std::int16_t, 3> pictures{};
    [[nodiscard]] Colour colour(int number) const { return colours.at(static_cast<std::size_t>(number) - 1); }
    [[nodiscard]] std::int16_t picture(int number) const { return pictures.at(static_cast<std::size_t>(number) - 1); }
};

/// Chooses the theme by the colour scheme's name, else by the colour of active captions.
Theme InitXP(const DesktopFacts& desktop, cRegTool& registry);

}  // namespace kolmera
