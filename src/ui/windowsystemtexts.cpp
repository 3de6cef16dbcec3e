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
