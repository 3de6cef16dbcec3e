#include "wholeruns/data/jobs.h"

#include "definitions/couplingfile.h"
#include "definitions/jobfile.h"

namespace kolmera::bench {

namespace {

// Target codes of columns of Produkt, and of the first heading of alternative numbers.
constexpr int kNumber = 1, kArticle = 4, kName = 6, kName2 = 7, kSalesUnit = 15, kPurchase = 21, kSales1 = 24;
constexpr int kFirstHeading = 138;
constexpr int kFreeText = 213;  // takes the discount code without being written

void writeMaskJob(const std::filesystem::path& folder, const FormatName& format) {
    MaskFile(folder).save(maskOf(format), relationsOf(format.format));
    Job job;
    job.name = format.job;
    job.mask = format.job;
    job.company = kCompanyFile;
    job.supplier = kSupplier;
    job.priceFile = kPriceFile;
    JobFile(folder).save(job);
}

void writeTradeJob(const std::filesystem::path& folder, const FormatName& format) {
    JobFile jobs(folder);
    Job job = jobs.find(format.job).value();  // every data folder has them
    job.company = kCompanyFile;
    job.priceFile = kPriceFile;
    if (format.format == Format::Finfo) {
        job.fromGroup = kLowestGroup;
        job.toGroup = kHighestGroup;
        job.heading1 = kMicronicHeading;
        job.heading2 = kEanHeading;
    }
    jobs.save(job);

    CouplingFile couplings(folder);
    Coupling coupling;
    coupling.job = format.job;
    coupling.code = kSupplierCode;
    coupling.supplier = kSupplier;
    coupling.mainSupplier = true;
    couplings.save(coupling);
    if (format.format == Format::Finfo) return;
    coupling.code = kSecondCode;
    coupling.supplier = kSecondSupplier;
    coupling.mainSupplier = false;
    couplings.save(coupling);
}

}  // namespace

Mask maskOf(const FormatName& format) {
    Mask mask;
    mask.Namn = format.job;
    mask.FilTyp = format.name.front();
    mask.AntalRader = std::to_string(kRecordLines);
    mask.Postlängd = std::to_string(kRecordLength);
    mask.AntalKolumner = kTabColumns;
    mask.Tecken = format.format == Format::Lines ? 'J' : 'N';
    mask.SkapaNya = format.format == Format::Tab ? 'J' : 'N';
    mask.UppdatLev = format.format == Format::Lines ? 'N' : 'J';
    return mask;
}

std::vector<Relation> relationsOf(Format format) {
    switch (format) {
        case Format::Tab:
            return {{1, kNumber, 0, 0, 'U', 'S'},    {2, kName, 0, 0, 'U', 'I'},        {3, kArticle, 0, 0, 'U', 'I'},
                    {4, kPurchase, 0, 0, 'U', 'I'},  {5, kFreeText, 0, 0, 'I', 'R'},    {6, kSales1, 0, 0, 'U', 'I'},
                    {7, kSalesUnit, 0, 0, 'U', 'I'}, {8, kFirstHeading, 0, 0, 'U', 'I'}};
        case Format::Lines:
            return {{1, kNumber, 0, 0, 'U', 'S'},
                    {2, kName, 0, 0, 'U', 'I'},
                    {3, kPurchase, 0, 0, 'U', 'I'},
                    {4, kSales1, 0, 0, '1', 'I'}};
        case Format::Fixed:
            return {{1, kArticle, 1, 20, 'U', 'S'},
                    {2, kName2, 21, 30, 'U', 'I'},
                    {3, kPurchase, 51, 9, 'U', '2'},
                    {4, kSales1, 60, 9, 'U', '2'},
                    {5, kSalesUnit, 69, 4, 'S', 'I'}};
        default:
            return {};
    }
}

void writeJob(const std::filesystem::path& folder, const FormatName& format) {
    if (ÄrStandardFormat(format.job)) {
        writeTradeJob(folder, format);
    } else {
        writeMaskJob(folder, format);
    }
}

}  // namespace kolmera::bench
