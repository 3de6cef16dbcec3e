#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "import/templates/jobtemplate.h"
#include "startup/company.h"

namespace kolmera {

/// A template on its way into a data folder: what has to be asked first, and the saving. Knows no window. First the
/// name, then the company, then its suppliers.
class TemplateImport {
  public:
    /// Looks at what is in the folder under the template's names. Throws PlatformError.
    TemplateImport(std::filesystem::path dataFolder, JobTemplate wanted);

    [[nodiscard]] const Job& job() const { return wanted_.definition.job; }
    /// The name here; false for one that cannot be stored; a trade format keeps its own.
    bool setName(const std::string& name);
    /// That of the job of the same name, or of all jobs here; empty where nobody knows. Then it has to be set.
    [[nodiscard]] const std::string& company() const { return wanted_.definition.job.company; }
    void setCompany(const std::string& company) { wanted_.definition.job.company = company; }
    /// Compares the suppliers with those of the company. False when it cannot be opened, which has been told.
    bool lookAtCompany(CompanyRegister& companies, SqlLayer& sql);

    /// A supplier whom the template names.
    struct Supplier {
        std::string number, name;  ///< where the template was made
        std::string here;          ///< the number here; empty: that has to be asked
    };
    [[nodiscard]] const std::vector<Supplier>& suppliers() const { return suppliers_; }
    /// A number means the same supplier where it has the same name.
    void compareSuppliers(const std::vector<SupplierRow>& company);
    /// What the company calls the supplier of that number; nothing when there is none.
    [[nodiscard]] std::optional<std::string> nameHere(const std::string& number) const;
    /// The number here of `suppliers()[place]`; one that the company does not have is as good as none.
    void setSupplier(std::size_t place, const std::string& here);
    /// The number of the one supplier here who has the name of that one; empty for none, or several.
    [[nodiscard]] std::string numberOfName(std::size_t place) const;
    [[nodiscard]] bool knowsSuppliers() const;

    /// Whether the job, its couplings or its mask would be written over; these are their names.
    [[nodiscard]] const std::vector<std::string>& writesOver() const { return writesOver_; }
    /// Writes all of it or nothing. What was there under the job's name is gone then, its couplings too; its command
    /// stays. Throws PlatformError: kChangedElsewhere when another program has changed what would be written over.
    int save() const;

  private:
    void look();
    [[nodiscard]] bool isSetUp() const;
    /// What is kept of the job beside its record.
    struct Options {
        Limits limits;
        std::optional<SourceSettings> source;
        bool operator==(const Options&) const = default;
    };
    [[nodiscard]] Options storedOptions() const;

    std::filesystem::path folder_;
    JobTemplate wanted_;
    std::vector<Supplier> suppliers_;
    std::vector<SupplierRow> company_;
    // What is here under the names.
    std::optional<Job> job_;
    Options options_;
    std::optional<WholeMask> mask_;
    std::vector<Coupling> couplings_;
    std::vector<std::string> writesOver_;
};

}  // namespace kolmera
