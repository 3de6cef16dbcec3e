#pragma once

#include <string_view>

#include "db/sqllayer.h"
#include "definitions/samplevalues.h"
#include "lang/languagetexts.h"
#include "platform/date.h"

namespace kolmera {

/// What a run of a job with that supplier would do with a record of the sample: the record is cut, its product is
/// found and its columns are written as in a run, into a product that is then not saved. Coupled prices, which a run
/// computes anew when the product is saved, are not shown. The company is open.
SampleValues readSample(SqlLayer& sql, LanguageTexts& texts, Date Idag, std::string_view supplier, const Mask& mask,
                        const std::vector<Relation>& relations, const std::filesystem::path& sample,
                        std::int64_t record);

}  // namespace kolmera
