// make_ts FILE MEGABYTES: writes a transport stream of at least that size.
#include <cstdio>
#include <cstdlib>

#include "bits/output_file.h"
#include "ts_content.h"

using namespace quorlin;

int main(int argc, char** argv) {
    OutputFile file;
    if (argc != 3 || output_open(file, argv[1], "wb") != 0) {
        std::fprintf(stderr, "usage: make_ts FILE MEGABYTES\n");
        return 64;
    }
    const uint64_t size = std::strtoull(argv[2], nullptr, 10) * 1000000;
    TsContent content;
    TsWriter writer;
    int status = 0;
    for (uint64_t written = 0; written < size && status == 0; written += writer.bytes.size()) {
        writer.bytes.clear();
        content.append_picture(writer);
        status = output_write(file, writer.bytes);
    }
    status |= output_close(file);
    if (status != 0) std::fprintf(stderr, "make_ts: %s: cannot be written\n", argv[1]);
    return status != 0 ? 1 : 0;
}
