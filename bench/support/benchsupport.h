// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane benchmarks — what several benchmarks share: a scratch folder with the program
// files, a request processor that keeps time, medians.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "common/result.h"
#include "qbgateway/requestprocessor.h"
#include "quietui.h"
#include "tempfolder.h"

namespace dorvane::bench {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start);
// The processor time this thread has used so far, in seconds: a figure that other work on
// the machine does not inflate.
double threadCpuSeconds();
// The median of the samples (the mean of the middle two for an even count); 0 for none.
double median(std::vector<double> samples);

// A benchmark's temporary folder, kept when $DORVANE_BENCH_KEEP is set.
class ScratchFolder : public testkit::TempFolder {
public:
    explicit ScratchFolder(const std::string& prefix);
};

// Copies the shipped program files (templates, style sheets) into `folder`.
void copyProgramFiles(const std::filesystem::path& folder);

// Ends the benchmark when a step it builds on failed: its figures would mean nothing.
void require(const Status& status);

// Sets an environment variable for the rest of the process.
void setEnvironment(const char* name, const std::string& value);

// Where the time of the request processors made by `timedFactory` goes.
struct ProcessorTimes {
    double total = 0;     // making the processor and all six operations
    double request = 0;   // ProcessRequest alone
    double totalCpu = 0;  // as `total`, this thread's processor time
    int requests = 0;
    // The answer of the last ProcessRequest, when `keepAnswer` is set.
    bool keepAnswer = false;
    std::string lastAnswer;

    void clear() {
        total = 0;
        request = 0;
        totalCpu = 0;
        requests = 0;
        lastAnswer.clear();
    }
};

// Wraps a factory so that the processors it makes add their time to `times`.
qbgateway::ProcessorFactory timedFactory(qbgateway::ProcessorFactory inner, ProcessorTimes& times);

}  // namespace dorvane::bench
