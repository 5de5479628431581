#include "ztpinfo/info_printer.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "support/golden.h"
#include "ztpinfo/info_printer_bsi.h"
#include "ztpinfo/info_printer_substream.h"

namespace {

// The first bytes of a frame, up to the end of its BSI.
FrameInfo frame_from_bsi(const char* hex) {
    std::vector<uint16_t> words;
    std::istringstream input(hex);
    for (uint32_t high = 0, low = 0; input >> std::hex >> high;) {
        if (!(input >> low)) low = 0;
        words.push_back(static_cast<uint16_t>(high << 8 | low));
    }
    FrameInfo frame;
    EXPECT_EQ(unpack_frame(words, frame), 0);
    frame.crc_status = CRC_NO_ERROR;  // there is no frame behind the BSI
    return frame;
}

struct ListingCase {
    const char* name;
    const char* bsi;
};

const ListingCase LISTINGS[] = {
    {"E-AC-3 5.1 with metadata", "0B 77 02 FF 3F 86 1A 39 80 8E E6 00"},
    {"E-AC-3, 3 blocks", "0B 77 01 7F 24 87 F9 24"},
    {"E-AC-3, dependent", "0B 77 40 FF 34 87 D0 20 00"},
    {"E-AC-3, dual mono, 1 block", "0B 77 00 5F 00 86 E2 1A 90 79 F2 DA D6 28 07 70 0A 75 E5 69 40"},
    {"E-AC-3, mixdef 3", "0B 77 00 5F 32 87 D3 35 73 0F AB E3 1A 00 00 04 F0 0C 27 E2 08 08 80"},
    {"E-AC-3, transcoded, 2 blocks", "0B 77 80 FF 1F 87 C5 C0"},
    {"AC-3, 44.1 kHz, time codes", "0B 77 8D 3E 5D 40 53 E1 A4 69 3F C4"},
    {"AC-3, dual mono", "0B 77 79 73 0E 40 0C 41 7F FC D4 F8 08"},
    {"AC-3, bsid 6", "0B 77 36 16 1C 30 EB C1 CD E9 1E C8 00"},
};

TEST(InfoPrinter, BsiListings) {
    std::string text;
    for (const ListingCase& listing : LISTINGS) {
        const FrameInfo frame = frame_from_bsi(listing.bsi);
        text += std::string("== ") + listing.name + "\n" + printed_by([&] { print_bsi_listing(frame); });
    }
    expect_golden("golden/bsi_listings.txt", text);
}

TEST(InfoPrinter, ChannelMapGivesTheLocationsOfItsSubstream) {
    const FrameInfo dependent = frame_from_bsi("0B 77 40 FF 34 87 D0 20 00");
    const std::string text = printed_by([&] { print_substream_summary(dependent); });
    EXPECT_NE(text.find("            Coded channels: Lrs, Rrs\n"), std::string::npos) << text;
}

TEST(InfoPrinter, FieldsAtTheEdgesOfTheirRange) {
    FrameInfo frame = frame_from_bsi("0B 77 00 5F 32 87 D3 00");
    Eac3Bsi& bsi = frame.eac3;
    frame.crc_status = CRC_FULL_FRAME_ERROR;
    bsi.dialnorm = 0;
    bsi.compre = 1;
    bsi.compr = 0x80;
    bsi.mixmdate = bsi.lfeon = bsi.lfemixlevcode = 1;
    bsi.acmod = 7;
    bsi.lfemixlevcod = 31;
    bsi.pgmscle = 1;  // code 0
    bsi.addbsie = 1;
    bsi.addbsil = 32;
    bsi.addbsi[16] = 0xAB;
    bsi.addbsi[32] = 0xCD;
    expect_golden("golden/bsi_edges.txt", printed_by([&] { print_bsi_listing(frame); }));

    frame.bsid = 9;
    EXPECT_EQ(printed_by([&] { print_bsi_listing(frame); }),
              "            BSID not supported, bit stream information not available.\n");
}

// Two programs, the second one with D0 and D2 and a CRC error in D2; D0 has auxiliary data.
TEST(InfoPrinter, ProgramsAndSubstreams) {
    TimesliceRecord timeslice;
    TimesliceTails tails;
    const FrameInfo independent = {.bsid = 16,
                                   .acmod = 7,
                                   .lfeon = 1,
                                   .convsync = 1,
                                   .double_rate = 1,
                                   .frame_words = 384,
                                   .sample_rate = 48000,
                                   .blocks_per_frame = 3,
                                   .full_band_channels = 5,
                                   .total_channels = 6,
                                   .locations = 0xF801,
                                   .data_rate_kbps = 384};
    FrameInfo dependent = {.bsid = 16,
                           .strmtyp = 1,
                           .acmod = 2,
                           .chanmap = 0x0200,
                           .convsync = 0,
                           .frame_words = 128,
                           .sample_rate = 48000,
                           .blocks_per_frame = 3,
                           .full_band_channels = 2,
                           .total_channels = 2,
                           .locations = 0x0200,
                           .data_rate_kbps = 127.96F};
    timeslice.num_programs = 2;
    timeslice.programs[0].independent = {.present = true, .frame = independent};
    timeslice.programs[0].independent.frame.bsid = 8;
    timeslice.programs[0].independent.frame.strmtyp = 2;
    timeslice.programs[0].independent.frame.convsync = 0;
    timeslice.programs[0].data_rate_kbps = 1536.0F;
    ProgramRecord& second = timeslice.programs[3];
    second.num_dep_substreams = 2;
    second.full_band_channels = 9;
    second.lfe_channels = 1;
    second.locations = 0xFA01;
    second.words_between_syncs = 640;
    second.data_rate_kbps = 639.92F;
    second.crc_status = CRC_PARTIAL_FRAME_ERROR;
    second.independent = {.present = true, .frame = independent};
    second.dependent[0] = {.present = true, .frame = dependent};
    dependent.crc_status = CRC_PARTIAL_FRAME_ERROR;
    second.dependent[2] = {.present = true, .frame = dependent};
    tails[3].dependent[0] = {
        .has_encinfo = true, .encinfo = 1, .auxdatae = true, .auxdatal = 20, .auxdata = {0x0B77, 0xF000}};
    tails[3].dependent[2] = tails[3].dependent[0];

    std::string text;
    for (const uint16_t options : std::vector<uint16_t>{0x0002, 0x0004, 0x0008, 0x0600, 0x0051})
        text +=
            "== " + std::to_string(options) + "\n" + printed_by([&] { print_timeslice(timeslice, &tails, options); });
    expect_golden("golden/programs.txt", text);
    EXPECT_EQ(printed_by([&] { print_timeslice(timeslice, nullptr, ZTP_OPTION_AUXDATA); }),
              "No Auxdata information exists\nNo Auxdata information exists\nNo Auxdata information exists\n"
              "No Auxdata information exists\n");
}

// Everything that the options can show of real streams, the compliance lists and totals included.
TEST(InfoPrinter, RealStreams) {
    std::string text;
    for (const char* path : {"golden/eac3_51_metadata.ec3", "golden/ac3_51_metadata.ac3", "golden/ac3_51_44100.ac3"}) {
        std::ifstream file(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        const std::span<const uint8_t> span(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        const ZtpInfoPtr handle(ztpinfo_open());
        ztpinfo_configure(handle.get(), {.options = 0x0FFE});
        ZtpStreamSummary summary;
        text += std::string("== ") + path + "\n";
        text += printed_by([&] { EXPECT_LT(ztpinfo_process(span, summary, handle.get()), 2); });
    }
    expect_golden("golden/real_streams.txt", text);
}

}  // namespace
