// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane fuzzing — runs a fuzz target's entry point over saved inputs, without libFuzzer, so
// that the ordinary build and its tests replay every corpus and every regression input.
//
//   fuzz_NAME PATH...                      each file, and each file in each folder, once
//   fuzz_NAME --grow=MB --peak-limit=MB PATH...
//                                          the largest of them repeated to MB megabytes, once;
//                                          fails when the process peaked above the limit
//
// A path that does not exist is passed over (git keeps no empty regressions folder); finding
// no input at all is a failure.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace {

namespace fs = std::filesystem;

std::string readBytes(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void run(std::string_view bytes) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

long peakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

}  // namespace

int main(int argc, char** argv) {
    if (LLVMFuzzerInitialize) {
        LLVMFuzzerInitialize(&argc, &argv);
    }
    std::size_t growTo = 0;
    long peakLimit = 0;
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (arg.starts_with("--grow=")) {
            growTo = std::strtoul(argv[i] + 7, nullptr, 10) << 20;
        } else if (arg.starts_with("--peak-limit=")) {
            peakLimit = std::strtol(argv[i] + 13, nullptr, 10);
        } else if (fs::is_directory(arg)) {
            for (const auto& entry : fs::directory_iterator(arg)) {
                if (entry.is_regular_file()) {
                    inputs.push_back(entry.path());
                }
            }
        } else if (fs::is_regular_file(arg)) {
            inputs.emplace_back(arg);
        }
    }
    if (inputs.empty()) {
        std::fprintf(stderr, "no input found\n");
        return 1;
    }
    std::sort(inputs.begin(), inputs.end());
    if (growTo == 0) {
        for (const fs::path& input : inputs) {
            std::fprintf(stderr, "%s\n", input.filename().c_str());
            run(readBytes(input));
        }
        std::printf("replayed %zu inputs\n", inputs.size());
        return 0;
    }
    const fs::path largest = *std::max_element(
        inputs.begin(), inputs.end(),
        [](const fs::path& a, const fs::path& b) { return fs::file_size(a) < fs::file_size(b); });
    const std::string seed = readBytes(largest);
    if (seed.empty()) {
        std::fprintf(stderr, "the inputs are all empty\n");
        return 1;
    }
    std::string grown;
    grown.reserve(growTo);
    while (grown.size() + seed.size() <= growTo) {
        grown += seed;
    }
    grown.append(seed, 0, growTo - grown.size());
    const long before = peakMegabytes();
    run(grown);
    const long peak = peakMegabytes();
    std::printf("%s repeated to %.1f MB: peak %ld MB (%ld MB before the run)\n",
                largest.filename().c_str(), static_cast<double>(grown.size()) / (1 << 20), peak,
                before);
    if (peakLimit > 0 && peak > peakLimit) {
        std::fprintf(stderr, "peak %ld MB is over the limit of %ld MB\n", peak, peakLimit);
        return 1;
    }
    return 0;
}
