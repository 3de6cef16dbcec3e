#pragma once

#include <functional>

#include "history/changereport.h"
#include "history/comparisonlist.h"
#include "history/recordreader.h"
#include "ui/program.h"

namespace kolmera {

/// Closes the company at its end: who copies a file that is open may miss what others have written last.
class ClosesCompany {
  public:
    explicit ClosesCompany(Program& program) : sql_(program.state.sql) {}
    ClosesCompany(const ClosesCompany&) = delete;
    ClosesCompany& operator=(const ClosesCompany&) = delete;
    ~ClosesCompany() { sql_.FtgDB.reset(); }

  private:
    SqlLayer& sql_;
};

// What the company of a run knows of the products that its record tells of. Only companies in files are asked: one on a
// server is not opened for names, which can take long.

/// Names what the rows of a report are about, as far as the run had not read it.
void nameProducts(Program& program, ChangeReport& report);
/// Names the articles of the price file that the run read.
void nameArticles(Program& program, const RunHeader& run, ComparisonList& list);

}  // namespace kolmera
