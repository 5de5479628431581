# cmake -DPAGE=findings.md -DSOURCE=findings_page.cpp -P findings_page.cmake: the page as bytes, since a string literal
# may not be that long everywhere.
file(READ ${PAGE} bytes HEX)
string(REGEX REPLACE "(................................................)" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
file(WRITE ${SOURCE} "#include \"json/findings_page.h\"

namespace quorlin {

namespace {

constexpr unsigned char BYTES[] = {
${bytes}
};

}  // namespace

const std::string_view FINDINGS_PAGE{reinterpret_cast<const char*>(BYTES), sizeof BYTES};

}  // namespace quorlin
")
