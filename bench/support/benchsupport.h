// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane benchmarks — what several benchmarks share: a scratch folder with the program
// files, a front end that answers nothing, a request processor that keeps time, medians.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "common/result.h"
#include "qbgateway/requestprocessor.h"
#include "tempfolder.h"
#include "ui/uiport.h"

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

// A front end without a person: boxes are printed to stderr and answered with their
// default, the event loop has nothing to run.
class QuietUi final : public ui::UiPort {
public:
    ui::Answer messageBox(std::string_view text, std::string_view title, ui::Icon icon,
                          ui::Buttons buttons) override;
    std::optional<std::string> inputBox(std::string_view prompt, std::string_view title,
                                        std::string_view preset) override;
    std::optional<std::string> openFileDialog(std::string_view, std::string_view) override {
        return std::nullopt;
    }
    void openWithDesktop(std::string_view) override {}
    std::string clipboardText() override { return {}; }
    void beep() override {}
    void setBusy(bool) override {}
    void yield() override {}
    bool runDialog(ui::DialogModel&) override { return false; }

    int messages() const { return m_messages; }

private:
    int m_messages = 0;
};

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
