#include "import/masks/loadedmask.h"

#include "definitions/masktarget.h"

namespace kolmera {
namespace {

LoadedMask::Layout layoutOf(char FilTyp) {
    switch (FilTyp) {
        case 'F':
            return LoadedMask::Layout::Lines;
        case 'T':
            return LoadedMask::Layout::Tabs;
        default:
            return LoadedMask::Layout::Fixed;
    }
}

}  // namespace

LoadedMask::LoadedMask(const Mask& mask, std::vector<Relation> allRelations)
    : Namn(mask.Namn),
      layout(layoutOf(mask.FilTyp)),
      codePage(mask.Tecken == 'J' ? CodePage::Oem850 : CodePage::Windows1252),
      SkapaNya(mask.SkapaNya == 'J'),
      UppdatLev(mask.UppdatLev == 'J'),
      AntalRader(maskNumber(mask.AntalRader)),
      Postlängd(maskNumber(mask.Postlängd)),
      relations(std::move(allRelations)) {
    tooManyRelations = relations.size() > std::size_t{kMostRelations};
    if (tooManyRelations) relations.resize(std::size_t{kMostRelations});
    for (const Relation& relation : relations) note(relation);
    switch (layout) {
        case Layout::Lines:
            entries = AntalRader;
            break;
        case Layout::Tabs:
            entries = tabColumns(mask, relations);
            break;
        case Layout::Fixed:
            entries = static_cast<int>(relations.size());
            break;
    }
}

void LoadedMask::note(const Relation& relation) {
    const Source source{relation.Källa, relation.Division, relation.TypKod};
    if (relation.Division == 'S') {
        hasKey = true;
        key = source;
        keyTarget = relation.Mål;
    }
    if (relation.Division == 'R') discountCode = source;
    hasAlternatives = hasAlternatives || headingOf(relation.Mål) != 0;
    switch (relation.Mål) {
        case target("Leverantör"):
            supplier = source;
            break;
        case target("Inpris"):
            prices[0] = source;
            break;
        case target("Rabatt"):
            discount = source;
            break;
        case target("Prisändrdat"):
            date = source;
            break;
        case target("Dokument"):
            document = source;
            break;
        default:
            break;
    }
    if (const int level = priceListOf(columnOf(relation.Mål)); level > 0)
        prices.at(static_cast<std::size_t>(level)) = source;
}

bool LoadedMask::emptyRecords() const {
    return (layout == Layout::Lines && AntalRader < 1) || (layout == Layout::Fixed && Postlängd < 1);
}

}  // namespace kolmera
