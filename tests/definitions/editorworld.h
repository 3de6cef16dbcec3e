#pragma once

#include <gtest/gtest.h>

#include "startup/company.h"
#include "support/world.h"

namespace kolmera::test {

/// A world whose company is open, for the editors.
class EditorWorld : public World {
  public:
    EditorWorld() : boxes(port, {}), companies(state, texts(), boxes) { job.company = "FTG1.mdb"; }
    /// `port` follows the script of a test until its end; the texts are those of the window.
    void expect(FormKey text, const FormKey* title = nullptr, Answer answer = Answer::OK) {
        port.expect(texts().FormulärSträng(text), title == nullptr ? "Kolmera" : texts().FormulärSträng(*title),
                    answer);
    }
    bool openCompany() { return companies.ÖppnaDatabas("FTG1.mdb"); }

    MessageBoxes boxes;
    CompanyRegister companies;
};

}  // namespace kolmera::test
