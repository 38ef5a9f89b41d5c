// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/benchsupport.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <type_traits>

namespace dorvane::bench {

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double threadCpuSeconds() {
    timespec t{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

double median(std::vector<double> samples) {
    if (samples.empty()) {
        return 0;
    }
    std::sort(samples.begin(), samples.end());
    const std::size_t mid = samples.size() / 2;
    return samples.size() % 2 ? samples[mid] : (samples[mid - 1] + samples[mid]) / 2;
}

ScratchFolder::ScratchFolder(const std::string& prefix) : TempFolder(prefix) {
    if (std::getenv("DORVANE_BENCH_KEEP")) {
        keep();
    }
}

void copyProgramFiles(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const auto& f : std::filesystem::directory_iterator(DORVANE_PROGRAM_SOURCE_DIR)) {
        if (f.is_regular_file() && f.path().filename() != "CMakeLists.txt") {
            std::filesystem::copy_file(f.path(), folder / f.path().filename(),
                                       std::filesystem::copy_options::overwrite_existing);
        }
    }
}

void require(const Status& status) {
    if (!status) {
        std::fprintf(stderr, "%s\n", status.error().description.c_str());
        std::exit(1);
    }
}

void setEnvironment(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1);
}

namespace {

class TimedProcessor final : public qbgateway::RequestProcessor {
public:
    TimedProcessor(std::unique_ptr<qbgateway::RequestProcessor> inner, ProcessorTimes& times)
        : m_inner(std::move(inner)), m_times(times) {}

    Status openConnection(const std::string& appId, const std::string& appName) override {
        return timed([&] { return m_inner->openConnection(appId, appName); });
    }
    Result<std::string> beginSession(const std::string& companyFile,
                                     qbgateway::FileMode mode) override {
        return timed([&] { return m_inner->beginSession(companyFile, mode); });
    }
    Result<std::string> getCurrentCompanyFileName(const std::string& ticket) override {
        return timed([&] { return m_inner->getCurrentCompanyFileName(ticket); });
    }
    Result<std::string> processRequest(const std::string& ticket,
                                       const std::string& request) override {
        const auto start = Clock::now();
        const double cpu = threadCpuSeconds();
        auto answer = m_inner->processRequest(ticket, request);
        const double spent = secondsSince(start);
        m_times.totalCpu += threadCpuSeconds() - cpu;
        m_times.total += spent;
        m_times.request += spent;
        ++m_times.requests;
        if (m_times.keepAnswer && answer) {
            m_times.lastAnswer = *answer;
        }
        return answer;
    }
    Status endSession(const std::string& ticket) override {
        return timed([&] { return m_inner->endSession(ticket); });
    }
    Status closeConnection() override {
        return timed([&] { return m_inner->closeConnection(); });
    }

private:
    template <class F>
    std::invoke_result_t<F> timed(F call) {
        const auto start = Clock::now();
        const double cpu = threadCpuSeconds();
        auto result = call();
        m_times.totalCpu += threadCpuSeconds() - cpu;
        m_times.total += secondsSince(start);
        return result;
    }

    std::unique_ptr<qbgateway::RequestProcessor> m_inner;
    ProcessorTimes& m_times;
};

}  // namespace

qbgateway::ProcessorFactory timedFactory(qbgateway::ProcessorFactory inner, ProcessorTimes& times) {
    return [inner = std::move(inner),
            &times]() -> Result<std::unique_ptr<qbgateway::RequestProcessor>> {
        const auto start = Clock::now();
        const double cpu = threadCpuSeconds();
        auto made = inner();
        times.totalCpu += threadCpuSeconds() - cpu;
        times.total += secondsSince(start);
        if (!made) {
            return made.error();
        }
        return std::unique_ptr<qbgateway::RequestProcessor>(
            std::make_unique<TimedProcessor>(std::move(*made), times));
    };
}

}  // namespace dorvane::bench
