#include "ztpinfo/info_printer_bsi.h"

#include <cstdio>

#include "ztpinfo/info_printer_ac3.h"
#include "ztpinfo/info_printer_defaults.h"
#include "ztpinfo/info_printer_eac3.h"
#include "ztpinfo/info_printer_lines.h"

namespace quorlin {

void print_bsi_listing(const ZtpFrameInfo& frame) {
    const char* end = line_end(frame.crc_status);
    if (is_ac3_bsid(frame.bsid)) {
        std::printf("            Zentra Bitstream Information:\n");
        print_ac3_fields(frame.ac3, end);
        print_ac3_defaults(frame.ac3);
    } else if (is_eac3_bsid(frame.bsid)) {
        std::printf("            Zentra Plus Bitstream Information:\n");
        print_eac3_fields(frame.eac3, end);
        print_eac3_defaults(frame.eac3);
    } else {
        std::printf("            BSID not supported, bit stream information not available.\n");
    }
}

}  // namespace quorlin
