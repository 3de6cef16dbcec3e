#pragma once

#include <array>
#include <string>
#include <vector>

#include "definitions/maskfile.h"
#include "definitions/targetcodes.h"
#include "platform/encodings.h"

namespace kolmera {

/// Where a value stands: the number of an entry, 0 when the mask does not name any, and its relation's second letter.
struct Source {
    int entry = 0;
    char Division = 'I';
    char TypKod = 'I';

    [[nodiscard]] bool present() const { return entry != 0; }
};

/// A mask as a run uses it. Of several relations for one purpose the last one counts.
struct LoadedMask {
    enum class Layout { Lines, Tabs, Fixed };

    LoadedMask() = default;
    LoadedMask(const Mask& mask, std::vector<Relation> allRelations);

    std::string Namn;
    Layout layout = Layout::Lines;
    CodePage codePage = CodePage::Windows1252;
    bool SkapaNya = false;
    bool UppdatLev = false;
    int AntalRader = 0;  ///< lines that make a record
    int Postlängd = 0;   ///< bytes of a record
    int entries = 0;     ///< size of the entry list
    bool tooManyRelations = false;

    std::vector<Relation> relations;  ///< the first hundred
    bool hasKey = false;
    Source key;
    int keyTarget = 0;
    Source discountCode;
    Source supplier;
    Source discount;
    Source date;
    Source document;
    bool hasAlternatives = false;
    std::array<Source, 10> prices;  ///< 0 the purchase price, 1-9 the price levels

    [[nodiscard]] bool hasPurchasePrice() const { return prices[0].present(); }
    /// What a record consists of is not known: no lines, or no length.
    [[nodiscard]] bool emptyRecords() const;

  private:
    void note(const Relation& relation);
};

}  // namespace kolmera
