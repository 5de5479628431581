// Streams and the findings of a rule set over them: every number exactly when its rule is broken.
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/golden.h"
#include "support/syncframe_writer.h"
#include "ztpinfo/ztpinfo.h"

namespace {

struct RuleCase {
    const char* name;
    std::vector<const char*> calls;  // one buffer each, all of one handle
    const char* numbers;             // of the accumulated list, failures and warnings
};

const RuleCase GENERIC_CASES[] = {
    {"valid 5.1", {"4*I"}, ""},
    {"valid 7.1", {"I D I D"}, ""},
    {"valid 3 blocks", {"I:blocks=3,sync=1 I:blocks=3 I:blocks=3,sync=1 I:blocks=3"}, ""},
    {"valid 2 blocks", {"I:blocks=2,sync=1 2*I:blocks=2 I:blocks=2,sync=1 2*I:blocks=2"}, ""},
    {"valid 1 block", {"I:blocks=1,sync=1 5*I:blocks=1 I:blocks=1,sync=1 5*I:blocks=1"}, ""},
    {"a frameset across two calls", {"I:blocks=3,sync=1 I:blocks=3 I:blocks=3,sync=1", "I:blocks=3"}, "172"},
    {"bsid 12 counts as 16", {"2*I:bsid=12"}, ""},
    {"bsid 11 does not", {"2*I:bsid=11"}, "068"},
    {"the number of programs shrinks", {"I I1 I"}, "061"},
    {"the number of programs grows", {"I", "I I1"}, "061"},
    {"LFE goes", {"I I:lfeon=0"}, "062 071"},
    {"coding mode changes", {"I I:acmod=6"}, "062 071 072"},
    {"coding mode changes from call to call", {"I", "I:acmod=6"}, "062 071 072"},
    {"coding mode changes, channels stay", {"I:acmod=3 I:acmod=4"}, "072"},
    {"frame length changes", {"2*I I:words=255"}, "063 077"},
    {"frame length alternates at 44.1 kHz", {"I:fscod=1 I:fscod=1,words=255"}, "063 074"},
    {"sample rate changes", {"I I:fscod=2"}, "064 074"},
    {"D1 beside D0", {"I D D1 I D D1"}, "065 085"},
    {"D1 without D0", {"I D1 I D1"}, "065 085"},
    {"one timeslice alone has no program rules", {"I D D1"}, "085"},
    {"3024 kbps", {"I:blocks=2,sync=1,words=2016 2*I:blocks=2,words=2016"}, ""},
    {"above 3024 kbps", {"I:blocks=2,sync=1,words=2017 2*I:blocks=2,words=2017"}, "067"},
    {"above 3024 kbps in two substreams",
     {"I:blocks=3,sync=1,words=2048 D:blocks=3,words=985 I:blocks=3,words=2048 D:blocks=3,words=985"},
     "067"},
    {"blocks of D0 differ", {"I D:blocks=3 I D:blocks=3"}, "066 095"},
    {"AC-3", {"2*A"}, "068"},
    {"AC-3: the check words are not looked at", {"A A:crc=1"}, "068"},
    {"AC-3 skips the rule at the end", {"I:blocks=3,sync=1 A"}, "068"},
    {"D0 goes", {"I D I"}, "062 063 069"},
    {"D0 appears", {"I I D"}, "062 063 069 086 087 089 094"},
    {"four programs", {"I I1 I2 I3 I I1 I2 I3"}, ""},
    {"five programs", {"I I1 I2 I3 I4 I I1 I2 I3 I4"}, "070"},
    {"1+1", {"2*I:acmod=0,lfeon=0"}, "073"},
    {"32 kHz", {"2*I:fscod=2"}, "074"},
    {"blocks become fewer", {"I I:blocks=3,sync=1 I:blocks=3"}, "076"},
    {"blocks become more", {"I:blocks=3,sync=1 I:blocks=3 I"}, "076"},
    {"6 blocks inside a frameset", {"I:blocks=3,sync=1 I"}, "076 169"},
    {"early sync, 3 blocks", {"2*I:blocks=3,sync=1 I:blocks=3"}, "081"},
    {"early sync, 2 blocks", {"I:blocks=2,sync=1 I:blocks=2 I:blocks=2,sync=1 2*I:blocks=2"}, "082"},
    {"early sync, 1 block", {"2*I:blocks=1,sync=1 5*I:blocks=1"}, "083"},
    {"late sync", {"I:blocks=3,sync=1 2*I:blocks=3 I:blocks=3,sync=1 I:blocks=3"}, "081 171"},
    {"no sync in the first frame", {"I:blocks=3 I:blocks=3,sync=1 I:blocks=3"}, "081 170 171"},
    {"6 blocks end the count", {"I I:blocks=3 I:blocks=3,sync=1 I:blocks=3"}, "076 081 170 171"},
    {"ends inside a frameset", {"I:blocks=2,sync=1 I:blocks=2"}, "172"},
    {"a single short frame", {"I:blocks=2,sync=1"}, ""},
    {"D0 with bsid 13", {"I D:bsid=13 I D:bsid=13"}, "084"},
    {"D0 channels change", {"I D I D:acmod=1,chanmap=0x0100"}, "062 086 087 089"},
    {"D0 map changes", {"I D I D:chanmap=0x0010"}, "087"},
    {"D0 map too small", {"I D:chanmap=0x0100 I D:chanmap=0x0100"}, "088"},
    {"D0 without a map", {"I D:chanmape=0 I D:chanmape=0"}, "088"},
    {"D0 with all pairs", {"I D:acmod=7,chanmap=0x0651 I D:acmod=7,chanmap=0x0651"}, "088"},
    {"D0 with two pairs and one", {"I D:acmod=7,chanmap=0x0640,lfeon=1 I D:acmod=7,chanmap=0x0640,lfeon=1"}, ""},
    {"D0: the reserved location counts once", {"I D:acmod=1,chanmap=0x0004 I D:acmod=1,chanmap=0x0004"}, ""},
    {"D0 coding mode changes", {"I D:acmod=3,chanmap=0x1900 I D:acmod=4,chanmap=0x1900"}, "089"},
    {"D0 1+1", {"I D:acmod=0 I D:acmod=0"}, "090"},
    {"D0 of another rate", {"I D:fscod=1 I D:fscod=1"}, "091 093"},
    {"D0 of double rate", {"I D:infomdate=1,sourcefscod=1 I D:infomdate=1,sourcefscod=1"}, "093"},
    {"D0 blocks change", {"I D I D:blocks=3"}, "066 094 095"},
    {"CRC of I0", {"2*I I:crc=1 I"}, "166"},
    {"CRC of D0", {"I D I D:crc=1"}, "166"},
    {"CRC of the second program", {"I I1 I I1:crc=1"}, "166"},
    {"the second program may change", {"I I1 I I1:acmod=6,words=100"}, ""},
    {"transcoded", {"2*T:acmod=0,lfeon=0"}, "187"},
    {"findings stay for later calls", {"I I:acmod=6", "", "2*I:acmod=6"}, "062 071 072"},
};

const RuleCase BLU_RAY_PRIMARY_CASES[] = {
    {"valid", {"A D A D"}, ""},
    {"valid at 640 kbps", {"2*A:frmsizecod=36"}, ""},
    {"two programs", {"A I1 A I1"}, "113 117 121"},
    {"LFE goes", {"A A:lfeon=0"}, "114 122"},
    {"coding mode changes", {"A A:acmod=6"}, "114 122 123"},
    {"rate changes", {"A A:fscod=2"}, "116 125 127 128"},
    {"D1", {"A D D1 A D D1"}, "117 189"},
    {"D0 blocks", {"A D:blocks=3 A D:blocks=3"}, "118 138"},
    {"bsid 7", {"2*A:bsid=7"}, "119"},
    {"I0 of bsid 15, D0 too", {"I:bsid=15 D:bsid=15 I:bsid=15 D:bsid=15"}, "119 130"},
    {"D0 goes", {"A D A"}, "114 120"},
    {"1+1", {"2*A:acmod=0,lfeon=0"}, "124"},
    {"64 words", {"2*A:frmsizecod=0"}, "129"},
    {"D0 changes", {"A D A D:acmod=1,chanmap=0x0100,words=129"}, "114 131 132 134 139"},
    {"D0 map", {"A D:chanmap=0x0100 A D:chanmap=0x0100"}, "133"},
    {"D0 1+1", {"A D:acmod=0 A D:acmod=0"}, "135"},
    {"D0 rate", {"A D:fscod=1 A D:fscod=1"}, "136"},
    {"D0 at 4737 kbps", {"A D:blocks=1,words=1579 A D:blocks=1,words=1579"}, "118 138 140"},
    {"D0 of 254 bytes", {"A D:words=127 A D:words=127"}, "141"},
    {"transcoded", {"2*T"}, "117 188"},
    {"check words", {"A:crc=2 A"}, "166"},
};

const RuleCase HD_DVD_SECONDARY_CASES[] = {
    {"valid", {"2*I:acmod=1,lfeon=0"}, ""},
    {"stereo is warned of", {"2*I:acmod=2,lfeon=0"}, "176"},
    {"5.1", {"2*I"}, "105"},
    {"programs come and go", {"I:acmod=1 I1:acmod=1 I:acmod=1"}, "061 102"},
    {"coding mode changes", {"I:acmod=1 I:acmod=2"}, "062 103 104 176"},
    {"length changes", {"I:acmod=1 I:acmod=1,words=255"}, "063 109"},
    {"rate changes", {"I:acmod=1 I:acmod=1,fscod=1"}, "064 106"},
    {"D0 and D1", {"I:acmod=1 D D1 I:acmod=1 D D1"}, "065 101"},
    {"D0 blocks", {"I:acmod=1 D:blocks=3 I:acmod=1 D:blocks=3"}, "066 101"},
    {"rate", {"2*I:acmod=1,blocks=2,words=2017"}, "067 108 110"},
    {"bsid 12", {"2*I:acmod=1,bsid=12"}, "100"},
    {"AC-3", {"2*A:acmod=1,lfeon=0"}, "068 100"},
    {"126 bytes", {"2*I:acmod=1,words=63"}, "111"},
    {"128 bytes", {"2*I:acmod=1,words=64"}, ""},
    {"20 bytes in a block", {"2*I:acmod=1,blocks=1,words=10"}, "108 111"},
    {"22 bytes in a block", {"2*I:acmod=1,blocks=1,words=11"}, "108"},
    {"transcoded", {"2*T:acmod=1"}, "187"},
    {"mixing metadata", {"2*I:acmod=1,mixmdate=1,pgmscle=1,extpgmscle=1,paninfoe=1"}, "173 174 175"},
    {"check words", {"I:acmod=1,crc=1 I:acmod=1"}, "166"},
};

const RuleCase BLU_RAY_SECONDARY_CASES[] = {
    {"valid", {"2*S"}, ""},
    {"two programs", {"S S1 S"}, "113 143"},
    {"coding mode changes", {"S S:acmod=2"}, "114 144 145 180"},
    {"rate changes", {"S S:fscod=1"}, "116 147"},
    {"D0 and D1", {"S D D1 S D D1"}, "117 177"},
    {"D0 blocks", {"S D:blocks=3 S D:blocks=3"}, "118 177"},
    {"AC-3", {"2*A"}, "142 151 152 178 180"},
    {"1+1", {"2*S:acmod=0"}, "146 180"},
    {"3 blocks", {"2*S:blocks=3"}, "149"},
    {"1026 bytes", {"2*S:words=513"}, "151"},
    {"no mixing metadata", {"2*I:acmod=1,lfeon=0"}, "152 178"},
    {"program scale", {"2*S:pgmscle=1"}, "153"},
    {"pan of mono", {"2*S:paninfoe=1"}, ""},
    {"pan of 1+1", {"2*S:acmod=0,paninfoe=1"}, "146 154 180"},
    {"premix", {"2*S:mixdef=3,mixdeflen=9,mixdata2e=1,premixcmpscl=1"}, "190"},
    {"mixdef 1", {"2*S:mixdef=1"}, "191"},
    {"mixdef 3 without scales", {"2*I:acmod=1,mixmdate=1,mixdef=3,mixdeflen=9,mixdata2e=1"}, "179"},
    {"mixdef 3 with scales",
     {"2*I:acmod=1,mixmdate=1,mixdef=3,mixdeflen=9,mixdata2e=1,extpgmlscle=1,extpgmcscle=1,extpgmrscle=1,"
      "extpgmlsscle=1,extpgmrsscle=1,extpgmlfescle=1"},
     "181 182 183 184 185 186"},
    {"transcoded", {"2*T:acmod=1,mixmdate=1"}, "178 188"},
    {"check words", {"S:crc=1 S"}, "166"},
};

// The numbers of a compliance list, parted by blanks.
std::string listed_numbers(const std::string& list) {
    std::string numbers;
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) numbers += (numbers.empty() ? "" : " ") + line.substr(4, 3);
    return numbers;
}

std::string findings(const RuleCase& rule_case, uint16_t rule_set) {
    const ZtpInfoPtr handle(ztpinfo_open());
    std::string last_list;
    for (const char* call : rule_case.calls) {
        const std::vector<uint8_t> bytes = syncframes(call);
        ztpinfo_configure(handle.get(), {.options = 0x0840, .rule_set = rule_set});
        ZtpStreamSummary summary;
        int result = 0;
        last_list = printed_by([&] { result = ztpinfo_process(bytes, summary, handle.get()); });
        EXPECT_EQ(result, last_list.find("FAILURE") != std::string::npos || last_list.find("TSC") != std::string::npos)
            << rule_case.name;
    }
    return listed_numbers(last_list);
}

// Checks the cases and that together they raise exactly `all_numbers`.
void check_cases(std::span<const RuleCase> cases, uint16_t rule_set, const std::set<uint32_t>& all_numbers) {
    std::set<uint32_t> raised;
    for (const RuleCase& rule_case : cases) {
        const std::string numbers = findings(rule_case, rule_set);
        EXPECT_EQ(numbers, rule_case.numbers) << rule_case.name;
        std::istringstream input(numbers);
        for (uint32_t number = 0; input >> number;) raised.insert(number);
    }
    EXPECT_EQ(raised, all_numbers);
}

TEST(Compliance, GenericRules) {
    check_cases(GENERIC_CASES, ZTP_RULES_GENERIC,
                {61, 62, 63, 64, 65, 66, 67, 68, 69, 70, 71, 72, 73,  74,  76,  77,  81,  82,
                 83, 84, 85, 86, 87, 88, 89, 90, 91, 93, 94, 95, 166, 169, 170, 171, 172, 187});
}

// 126 cannot be raised: an AC-3 frame always has six blocks.
TEST(Compliance, BluRayPrimaryRules) {
    check_cases(BLU_RAY_PRIMARY_CASES, ZTP_RULES_BLU_RAY_PRIMARY,
                {113, 114, 116, 117, 118, 119, 120, 121, 122, 123, 124, 125, 127, 128, 129,
                 130, 131, 132, 133, 134, 135, 136, 138, 139, 140, 141, 166, 188, 189});
}

// 84 cannot be raised: only I0 is looked at, and it is not dependent.
TEST(Compliance, HdDvdSecondaryRules) {
    check_cases(HD_DVD_SECONDARY_CASES, ZTP_RULES_HD_DVD_SECONDARY,
                {61,  62,  63,  64,  65,  66,  67,  68,  100, 101, 102, 103, 104,
                 105, 106, 108, 109, 110, 111, 166, 173, 174, 175, 176, 187});
}

TEST(Compliance, BluRaySecondaryRules) {
    check_cases(BLU_RAY_SECONDARY_CASES, ZTP_RULES_BLU_RAY_SECONDARY,
                {113, 114, 116, 117, 118, 142, 143, 144, 145, 146, 147, 149, 151, 152, 153,
                 154, 166, 177, 178, 179, 180, 181, 182, 183, 184, 185, 186, 188, 190, 191});
}

TEST(Compliance, NoRulesClearAllFlags) {
    EXPECT_EQ(findings({"wrong in many ways", {"A I1 I:acmod=0,crc=1"}, ""}, ZTP_RULES_NONE), "");
}

}  // namespace
