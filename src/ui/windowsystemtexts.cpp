#include "ui/windowsystemtexts.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "ui/qttext.h"

namespace kolmera {
namespace {

struct Text {
    std::string_view source, swedish;
};

constexpr Text kTexts[] = {
    // Buttons.
    {"OK", "OK"},
    {"Cancel", "Avbryt"},
    {"Open", "Öppna"},
    {"Save", "Spara"},
    {"Close", "Stäng"},
    {"&Yes", "&Ja"},
    {"&No", "&Nej"},
    // A message box.
    {"Show Details...", "Visa detaljer..."},
    {"Hide Details...", "Dölj detaljer..."},
    // The file dialog.
    {"Find Directory", "Leta upp mapp"},
    {"Save As", "Spara som"},
    {"&Open", "&Öppna"},
    {"&Save", "&Spara"},
    {"&Choose", "&Välj"},
    {"&Rename", "&Byt namn"},
    {"&Delete", "&Ta bort"},
    {"Show &hidden files", "Visa &dolda filer"},
    {"&New Folder", "&Ny mapp"},
    {"New Folder", "Ny mapp"},
    {"Directory:", "Mapp:"},
    {"File &name:", "Fil&namn:"},
    {"Files of type:", "Filer av typen:"},
    {"Look in:", "Leta i:"},
    {"Back", "Bakåt"},
    {"Go back", "Gå bakåt"},
    {"Forward", "Framåt"},
    {"Go forward", "Gå framåt"},
    {"Parent Directory", "Mappen ovanför"},
    {"Go to the parent directory", "Gå till mappen ovanför"},
    {"Create New Folder", "Skapa ny mapp"},
    {"Create a New Folder", "Skapa en ny mapp"},
    {"List View", "Lista"},
    {"Change to list view mode", "Visa som lista"},
    {"Detail View", "Detaljer"},
    {"Change to detail view mode", "Visa med detaljer"},
    {"Sidebar", "Sidofält"},
    {"List of places and bookmarks", "Platser och bokmärken"},
    {"Files", "Filer"},
    {"Recent Places", "Senaste platser"},
    {"Remove", "Ta bort"},
    {"Computer", "Datorn"},
    {"Name", "Namn"},
    {"Size", "Storlek"},
    {"Type", "Typ"},
    {"Kind", "Typ"},
    {"Folder", "Mapp"},
    {"Date Modified", "Ändrad"},
    {"All Files (*)", "Alla filer (*)"},
    {"%1 already exists.\nDo you want to replace it?", "%1 finns redan.\nVill du ersätta filen?"},
    {"%1\nFile not found.\nPlease verify the correct file name was given.",
     "%1\nFilen finns inte.\nKontrollera att filnamnet är rätt."},
    {"%1\nDirectory not found.\nPlease verify the correct directory name was given.",
     "%1\nMappen finns inte.\nKontrollera att mappens namn är rätt."},
    {"'%1' is write protected.\nDo you want to delete it anyway?", "%1 är skrivskyddad.\nVill du ändå ta bort den?"},
    {"Are you sure you want to delete '%1'?", "Vill du ta bort %1?"},
    {"Could not delete directory.", "Det går inte att ta bort mappen."},
    // The print dialog.
    {"Print", "Skriv ut"},
    {"Printer", "Skrivare"},
    {"&Name:", "&Namn:"},
    {"P&roperties", "&Egenskaper"},
    {"Location:", "Plats:"},
    {"Type:", "Typ:"},
    {"Output &file:", "Skriv till &fil:"},
    {"&Print", "&Skriv ut"},
    {"&Options >>", "&Fler val >>"},
    {"&Options <<", "&Färre val <<"},
    {"Print to File (PDF)", "Skriv till fil (PDF)"},
    {"Print To File ...", "Skriv till fil ..."},
    {"Local file", "Lokal fil"},
    {"Write PDF file", "Skriv en PDF-fil"},
    {"Copies", "Kopior"},
    {"Options", "Val"},
    {"Print range", "Sidor"},
    {"Print all", "Alla sidor"},
    {"Pages from", "Sidorna från"},
    {"to", "till"},
    {"Pages", "Sidor"},
    {"Current Page", "Aktuell sida"},
    {"Selection", "Markeringen"},
    {"Page Set:", "Sidurval:"},
    {"All Pages", "Alla sidor"},
    {"Odd Pages", "Udda sidor"},
    {"Even Pages", "Jämna sidor"},
    {"Output Settings", "Utskrift"},
    {"Copies:", "Antal kopior:"},
    {"Collate", "Sortera"},
    {"Reverse", "Sista sidan först"},
    {"Color Mode", "Färg"},
    {"Color", "Färg"},
    {"Grayscale", "Gråskala"},
    {"Double Sided Printing", "Dubbelsidig utskrift"},
    {"None", "Ingen"},
    {"Off", "Av"},
    {"Long side binding", "Längs långsidan"},
    {"Short side binding", "Längs kortsidan"},
    {"Printer Properties", "Skrivarens egenskaper"},
    {"Job Options", "Utskriftsjobb"},
    {"Advanced", "Avancerat"},
    {"Custom", "Egen"},
    {"Page", "Sida"},
    {"Page Setup", "Utskriftsformat"},
    {"Paper", "Papper"},
    {"Page size:", "Pappersformat:"},
    {"Width:", "Bredd:"},
    {"Height:", "Höjd:"},
    {"Paper source:", "Pappersfack:"},
    {"Orientation", "Riktning"},
    {"Portrait", "Stående"},
    {"Landscape", "Liggande"},
    {"Reverse landscape", "Omvänt liggande"},
    {"Reverse portrait", "Omvänt stående"},
    {"Margins", "Marginaler"},
    {"top margin", "övre marginal"},
    {"left margin", "vänster marginal"},
    {"right margin", "höger marginal"},
    {"bottom margin", "nedre marginal"},
    {"Page Layout", "Sidlayout"},
    {"Preview", "Förhandsgranskning"},
    {"Page order:", "Sidordning:"},
    {"Pages per sheet:", "Sidor per ark:"},
    {"Left to Right, Top to Bottom", "Vänster till höger, uppifrån och ned"},
    {"Left to Right, Bottom to Top", "Vänster till höger, nedifrån och upp"},
    {"Right to Left, Bottom to Top", "Höger till vänster, nedifrån och upp"},
    {"Right to Left, Top to Bottom", "Höger till vänster, uppifrån och ned"},
    {"Bottom to Top, Left to Right", "Nedifrån och upp, vänster till höger"},
    {"Bottom to Top, Right to Left", "Nedifrån och upp, höger till vänster"},
    {"Top to Bottom, Left to Right", "Uppifrån och ned, vänster till höger"},
    {"Top to Bottom, Right to Left", "Uppifrån och ned, höger till vänster"},
    {"Millimeters (mm)", "Millimeter (mm)"},
    {"Inches (in)", "Tum (in)"},
    {"Points (pt)", "Punkter (pt)"},
    {"Didot (DD)", "Didot (DD)"},
    {"Cicero (CC)", "Cicero (CC)"},
    {"%1 is a directory.\nPlease choose a different file name.", "%1 är en mapp.\nVälj ett annat filnamn."},
    {"%1 already exists.\nDo you want to overwrite it?", "%1 finns redan.\nVill du ersätta filen?"},
    {"File %1 is not writable.\nPlease choose a different file name.",
     "Det går inte att skriva till filen %1.\nVälj ett annat filnamn."},
    {"Invalid Pages Definition", "Felaktigt sidurval"},
    {"%1 does not follow the correct syntax. Please use ',' to separate ranges and pages, '-' to define ranges and "
     "make sure ranges do not intersect with each other.",
     "%1 är inget sidurval. Skriv kommatecken mellan sidor och bindestreck mellan första och sista sidan; samma sida "
     "får inte finnas två gånger."},
    {"Specify pages or ranges separated by commas. Ranges are specified by two numbers separated by a hyphen. E.g: "
     "3,5-7,9 prints pages 3, 5, 6, 7 and 9.",
     "Skriv sidor med kommatecken emellan och bindestreck mellan första och sista sidan: 3,5-7,9 skriver ut sidorna 3, "
     "5, 6, 7 och 9."},
    // The menu of a text box.
    {"&Undo", "&Ångra"},
    {"&Redo", "&Gör om"},
    {"Cu&t", "Klipp &ut"},
    {"&Copy", "&Kopiera"},
    {"&Paste", "K&listra in"},
    {"Delete", "Ta bort"},
    {"Select All", "Markera allt"},
};

}  // namespace

QString WindowSystemTexts::translate(const char* context, const char* sourceText, const char* /*disambiguation*/,
                                     int /*n*/) const {
    // An empty answer leaves the text as it is. The system's own classes begin with Q.
    if (context == nullptr || context[0] != 'Q' || sourceText == nullptr) return {};
    const std::string_view source(sourceText);
    const auto* found = std::find_if(std::begin(kTexts), std::end(kTexts),
                                     [source](const Text& text) { return text.source == source; });
    return found == std::end(kTexts) ? QString() : toQt(found->swedish);
}

}  // namespace kolmera
