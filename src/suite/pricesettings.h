#pragma once

#include <string>
#include <string_view>

#include "pricing/clsprisavrund.h"
#include "suite/syinstallningar2.h"

namespace kolmera {

// The settings of ClsPrisAvrund as a window reads and changes them.

/// Loads the settings through the settings object: what cannot be read becomes empty, 0 or false.
void InitInstOBJ(ClsPrisAvrund& prices, ClsSyInställningar_2& ObjSyInställningar_2);

/// The ranges as ten lines "From 1, To 1, ... From 5, To 5", separated by CR LF.
std::string StrInställning(const ClsPrisAvrund& prices);
/// Changes one bound, which counts at once.
void StrFrom(ClsPrisAvrund& prices, int Index, std::string_view New_StrFrom);
void StrTom(ClsPrisAvrund& prices, int Index, std::string_view New_StrTom);

// A setting for each price list, written back as one text ("1=EUR;3=USD"): the entries that are not empty and differ
// from the standard, in list order.
std::string StrPUtprisValuta(const ClsPrisAvrund& prices);
std::string StrPUtprisKopplaMot(const ClsPrisAvrund& prices);
std::string StrPUtprisMomsMot(const ClsPrisAvrund& prices);

/// The part of `pris` that a markup of `pålägg` percent added: with a VAT rate, the VAT in a price that includes it.
double TBFrånPålägg(double pris, double pålägg);
/// The price without the VAT of that code (1-3); unchanged for other codes.
double VändMoms(VatRates& rates, int IntMomskod, double DblPris);

}  // namespace kolmera
