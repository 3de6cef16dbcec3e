#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "definitions/couplingfile.h"
#include "definitions/jobfile.h"
#include "startup/startstate.h"

namespace kolmera {

/// What a new company still lacks before a price file can be read into it.
struct FirstSteps {
    bool todo = false;      ///< neither a job of the user's own nor a supplier coupling is there
    bool supplier = false;  ///< the company has a supplier
};

/// Of the company that the program opens first, where it is a file. One that is in use by now is only looked at when
/// there is something to do.
FirstSteps firstSteps(const StartState& state, const std::vector<Job>& jobs);

/// A trade-format job of a company, and one of its couplings; an empty code for a job without couplings.
struct CoupledJob {
    int number;
    std::string name;
    Coupling coupling;
};
std::vector<CoupledJob> coupledJobs(const StartState& state, const std::string& company);

}  // namespace kolmera
