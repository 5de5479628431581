#include "json/json_writer.h"

#include <gtest/gtest.h>

namespace quorlin {

namespace {

TEST(JsonWriter, TextsKeepEveryByte) {
    struct Case {
        const char* name;
        std::string_view text;
        const char* json;
    };
    const Case cases[] = {
        {"quotes and backslashes", "\"\\/", R"("\"\\/")"},
        {"control characters", std::string_view("\0\n\t\x1b\x7f", 5), R"("\u0000\n\t\u001b\u007f")"},
        {"UTF-8 of two, three and four bytes", "\u00e9\u20ac\uffe6\U0001f600", "\"\u00e9\u20ac\uffe6\U0001f600\""},
        {"the first of each length", "\u0080\u0800\u1000\U00010000\U00040000",
         "\"\u0080\u0800\u1000\U00010000\U00040000\""},
        {"the last of each length", "\u07ff\ud7ff\uffff\U0010ffff", "\"\u07ff\ud7ff\uffff\U0010ffff\""},
        {"a stray continuation byte", "a\x80z", R"("a\udc80z")"},
        {"a sequence cut at the end", "\xe2\x82", R"("\udce2\udc82")"},
        {"a sequence cut by another character", "\xe2\x82z", R"("\udce2\udc82z")"},
        {"overlong forms", "\xc0\xaf\xe0\x80\xaf\xf0\x80\x80\xaf",
         R"("\udcc0\udcaf\udce0\udc80\udcaf\udcf0\udc80\udc80\udcaf")"},
        {"an encoded surrogate", "\xed\xb2\x80", R"("\udced\udcb2\udc80")"},
        {"beyond U+10FFFF", "\xf4\x90\x80\x80\xf5", R"("\udcf4\udc90\udc80\udc80\udcf5")"},
    };
    for (const Case& c : cases) {
        std::string line;
        append_json_text(line, c.text);
        EXPECT_EQ(line, c.json) << c.name;
    }
}

TEST(JsonWriter, MembersOfNestedObjects) {
    JsonWriter json;
    begin_object(json);
    put_number(json, "a", INT64_MIN);
    begin_array(json, "b");
    begin_object(json);
    put_unsigned(json, "c", UINT64_MAX);
    put_optional_text(json, "d", nullptr);
    end_object(json);
    begin_object(json);
    end_object(json);
    end_array(json);
    put_flag(json, "e", true);
    end_object(json);
    EXPECT_EQ(json.line, R"({"a":-9223372036854775808,"b":[{"c":18446744073709551615,"d":null},{}],"e":true})");
}

TEST(JsonWriter, DecimalsOfThePlaylistAreNumbersOnlyWhenTheyAre) {
    for (const char* good : {"0", "0.5", "4", "4.004", "128000"}) {
        JsonWriter json;
        put_decimal(json, "n", good);
        EXPECT_EQ(json.line, std::string("\"n\":") + good);
    }
    for (const char* bad :
         {"", "4.", ".5", "04", "-1", "1e9", "4 ", " 4", "NaN", "0x10", "4.0.0", "123456789012345678901"}) {
        JsonWriter json;
        put_decimal(json, "n", bad);
        EXPECT_EQ(json.line, "\"n\":null") << bad;
    }
}

}  // namespace

}  // namespace quorlin
