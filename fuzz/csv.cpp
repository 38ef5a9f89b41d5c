// SPDX-License-Identifier: GPL-3.0-or-later
// A download as the batch import reads it: the header, then the data lines a chunk at a time
// into records, with both splitters, and the fields the import reads from every record.
#include <cstddef>
#include <cstdint>

#include "batch/batchimport.h"
#include "batch/csvtoxml.h"
#include "fuzzkit.h"

using namespace dorvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto file = fuzz::scratch() / "download.csv";
    fuzz::writeFile(file, fuzz::text(data, size));
    for (const batch::FieldQuoting quoting :
         {batch::FieldQuoting::Exported, batch::FieldQuoting::Rfc4180}) {
        batch::CsvLineReader reader(file, quoting);
        const auto header = reader.next();
        if (!header) {
            continue;
        }
        std::string delimiter = ",";
        const batch::Fields names = batch::headerFieldNames(*header, delimiter, quoting);
        std::vector<std::size_t> cut;
        const batch::CsvOptions options{quoting, &cut};
        std::vector<std::string> lines;
        auto convert = [&] {
            const xml::Document document = batch::csvLinesToXml(
                names, lines, batch::kRecordTag, batch::kRootTag, delimiter, options);
            for (const xml::Node& record : document.root().selectAll(batch::kRecordTag)) {
                for (const batch::RequiredColumn& column : batch::kRequiredColumns) {
                    (void)record.valueOf(column.field);
                }
            }
            lines.clear();
            cut.clear();
        };
        while (auto line = reader.next()) {
            lines.push_back(std::move(*line));
            if (lines.size() >= batch::kChunkLines) {
                convert();
            }
        }
        convert();
    }
    return 0;
}
