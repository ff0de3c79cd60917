#include "SRLib/TextHelpers.h"

#include <iconv.h>

#include <array>
#include <bit>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <type_traits>

// The core's text helpers on the C library's converter.
namespace util {
namespace {

struct CloseConverter {
  void operator()(iconv_t converter) const { ::iconv_close(converter); }
};
using ConverterPtr = std::unique_ptr<std::remove_pointer_t<iconv_t>, CloseConverter>;

constexpr const char* kWide = std::endian::native == std::endian::little ? "UTF-32LE" : "UTF-32BE";

ConverterPtr OpenConverter(const char* to, const char* from) {
  iconv_t converter = ::iconv_open(to, from);
  if (converter == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("no text converter");
  return ConverterPtr(converter);
}

// The converted bytes; of input that cannot be converted, `unit` bytes are skipped at a time.
std::string Convert(const char* to, const char* from, std::string_view input, std::size_t unit) {
  const ConverterPtr converter = OpenConverter(to, from);
  std::string bytes(input);
  char* next = bytes.data();
  std::size_t left = bytes.size();
  std::string output;
  std::array<char, 65536> chunk{};
  while (left != 0) {
    char* place = chunk.data();
    std::size_t room = chunk.size();
    const std::size_t result = ::iconv(converter.get(), &next, &left, &place, &room);
    const int error = errno;
    output.append(chunk.data(), chunk.size() - room);
    if (result != static_cast<std::size_t>(-1) || error == E2BIG) continue;
    next += unit;
    left -= unit;
  }
  return output;
}

}  // namespace

std::string narrow(std::wstring_view text) {
  const std::string_view bytes(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
  return Convert("UTF-8", kWide, bytes, sizeof(wchar_t));
}

std::wstring widen(std::string_view utf8) {
  const std::string bytes = Convert(kWide, "UTF-8", utf8, 1);
  std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
  bytes.copy(reinterpret_cast<char*>(text.data()), bytes.size());
  return text;
}

bool IsUTF8(std::string_view bytes) {
  return narrow(widen(bytes)) == bytes;
}

bool ReadUTF8File(const std::wstring& path, std::wstring& text) {
  const std::filesystem::path file(narrow(path));
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return false;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return false;
  text = widen(std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()));
  return true;
}

}  // namespace util
