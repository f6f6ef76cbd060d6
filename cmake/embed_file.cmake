# Writes the source of one embedded file; see embed.cmake.
file(READ ${FILE} hex HEX)
string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${hex}")
string(REGEX REPLACE "((.......){16})" "\\1\n" bytes "${bytes}")

# Base64 of the hash: three hexadecimal digits are two characters.
file(SHA256 ${FILE} hash)
set(alphabet "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
set(base64 "")
foreach(at RANGE 0 60 3)
  string(SUBSTRING ${hash} ${at} 3 digits)
  math(EXPR high "0x${digits} >> 6")
  math(EXPR low "0x${digits} & 63")
  string(SUBSTRING ${alphabet} ${high} 1 first)
  string(SUBSTRING ${alphabet} ${low} 1 second)
  string(APPEND base64 ${first}${second})
endforeach()
string(SUBSTRING ${hash} 63 1 digit)
math(EXPR last "0x${digit} << 2")
string(SUBSTRING ${alphabet} ${last} 1 last)
string(APPEND base64 "${last}=")

file(WRITE ${MADE} "#include <string_view>
namespace lexon::embedded {
static const char bytes[] = {
${bytes}'\\0'};
extern const std::string_view ${NAME}, ${NAME}_hash;
const std::string_view ${NAME}{bytes, sizeof bytes - 1};
const std::string_view ${NAME}_hash{\"${base64}\"};
}
")
