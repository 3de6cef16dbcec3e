#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "definitions/jobfile.h"
#include "definitions/maskfile.h"
#include "import/preview/preview.h"
#include "import/run/importcontext.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"
#include "support/scriptedport.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {

/// One relation of a mask. The target is a column of Produkt, "Alternativ 3" for a heading, or a code.
struct Link {
    int source = 0;
    std::string_view target{};
    char Division = 'I';
    char TypKod = 'U';
    int FrånPos = 0;
    int Längd = 0;
};

struct MaskSpec {
    char structure = 'T';
    int lines = 1;    ///< F
    int length = 10;  ///< P
    int columns = 0;  ///< T; 0: never read from a sample
    bool oem = false;
    bool createNew = true;
    bool supplierPrices = false;
    std::vector<Link> relations{};
};

/// A data folder with a company, a job and its price file, in which whole runs are carried out. The first job is a
/// mask job "Test" into "Testbolaget"; tests change `job` before they run it. The company is the file FTG1.mdb or,
/// where the environment names a database server, "SQL;TEST" on it: the same tests hold for both.
class World {
    TemporaryFolder folder_;

  public:
    using Row = std::vector<std::pair<std::string_view, Value>>;

    explicit World(Locale::Kind locale = Locale::Kind::Swedish);

    // What the world is like before the run.
    void add(std::string_view table, const Row& row);
    /// Writes settings of the company, each in the settings table that has the column.
    void setting(std::string_view column, const Value& value);
    void mask(const MaskSpec& spec);
    /// The price file as UTF-8; stored in Windows-1252 or, for a DOS file, in code page 850.
    void priceFile(std::string_view text, CodePage page = CodePage::Windows1252);
    void rawPriceFile(std::string_view bytes);
    void coupling(const std::string& code, const std::string& supplier, bool main = false);
    /// The database refuses new rows of a table that have one of these texts ("'A', 'B'") in a column.
    void refuse(const std::string& table, const std::string& column, const std::string& texts);
    void dropTable(const std::string& table);
    /// The job's company is from now on one of a database server. The engine of files stands in for the server's: what
    /// is tested is what runs ask of a server.
    void moveToServer();
    Job job;

    std::optional<RecordKeeping> keeping;  ///< set: the runs keep their records

    RunSummary run();
    RunSummary runWithinLimits();
    Preview preview(const PreviewOptions& options = {});

    /// The rows of a table in the order in which they were made, one a line: values separated by blanks, numbers with
    /// a point, Null as "-".
    [[nodiscard]] std::string rows(std::string_view table, std::string_view columns) const;
    /// A text of the main window.
    [[nodiscard]] std::string text(FormKey key) const { return texts_.FormulärSträng(key); }
    [[nodiscard]] LanguageTexts& texts() const { return texts_; }
    [[nodiscard]] std::filesystem::path company() const { return data() / "FTG1.mdb"; }
    [[nodiscard]] std::filesystem::path data() const { return folder_ / "data"; }
    [[nodiscard]] std::filesystem::path program() const { return folder_ / "program"; }
    [[nodiscard]] bool onServer() const { return server_; }
    /// The company's name as runs show it.
    [[nodiscard]] std::string shownCompany() const { return properCase(job.company); }
    /// The session by which rows are stated and read; in a file, a run closes it.
    [[nodiscard]] Database& session() const;
    /// A session of another program on the company.
    [[nodiscard]] std::unique_ptr<Database> open() const;

    ScriptedPort port;
    StartState state;
    Date Idag = *Date::fromIso("2026-11-22");

  private:
    void notePassedOver(const RunSummary& summary);
    void carryOut(const std::function<void(ImportContext&)>& work);

    bool server_;
    mutable std::unique_ptr<Database> database_;  ///< of a file: open between runs, while a test states or reads rows
    mutable LanguageTexts texts_;
};

}  // namespace kolmera::test
