#include "ResourceKeeper.h"

#include "libs/Files/AtomicFile.h"
#include "libs/Files/Bundle.h"
#include "libs/Lifetime/NoDestructor.h"
#include "libs/Lifetime/UniqueHandle.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Trace/SystemLog.h"

#include <fmt/format.h>
#include <iconv.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <string_view>

namespace {

constexpr char kFallbackLanguage[] = "en";

using ConverterPtr = Lifetime::UniqueHandle<void, ::iconv_close>;

std::optional<std::string> UTF8FromUTF16(std::string text, const char* encoding) {
  const iconv_t opened = ::iconv_open("UTF-8", encoding);
  if (opened == reinterpret_cast<iconv_t>(-1)) return std::nullopt;
  const ConverterPtr converter(opened);
  std::string utf8(text.size() / 2 * 3, '\0');  // two bytes become three at most
  char* from = text.data();
  char* to = utf8.data();
  std::size_t fromLeft = text.size();
  std::size_t toLeft = utf8.size();
  if (::iconv(converter.get(), &from, &fromLeft, &to, &toLeft) == static_cast<std::size_t>(-1)) {
    return std::nullopt;
  }
  utf8.resize(utf8.size() - toLeft);
  return utf8;
}

// By the byte-order mark; without one the text must be UTF-8.
std::optional<std::string> Decoded(std::string_view text) {
  if (text.starts_with("\xFF\xFE")) return UTF8FromUTF16(std::string(text.substr(2)), "UTF-16LE");
  if (text.starts_with("\xFE\xFF")) return UTF8FromUTF16(std::string(text.substr(2)), "UTF-16BE");
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  if (!util::IsUTF8(text)) return std::nullopt;
  return std::string(text);
}

std::optional<std::string> ReadText(const std::filesystem::path& file, std::error_code& error) {
  const std::optional<std::string> bytes = Files::AtomicFile::Read(file, error);
  if (!bytes) return std::nullopt;
  std::optional<std::string> text = Decoded(*bytes);
  if (!text) error = std::make_error_code(std::errc::illegal_byte_sequence);
  return text;
}

std::size_t FindIgnoringCase(std::string_view text, std::string_view wanted) {
  const auto sameLetter = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
  const auto found = std::search(text.begin(), text.end(), wanted.begin(), wanted.end(), sameLetter);
  return found == text.end() ? std::string_view::npos : static_cast<std::size_t>(found - text.begin());
}

// The text of the block, which reaches from the message's name to the newline before the closing full stop.
std::optional<std::string> TextOfBlock(std::string_view block) {
  constexpr std::string_view kLanguageMark = "\nLanguage        =";
  const std::size_t mark = FindIgnoringCase(block, kLanguageMark);
  if (mark == std::string_view::npos) return std::nullopt;
  const std::size_t lineEnd = block.find('\n', mark + kLanguageMark.size());
  if (lineEnd == std::string_view::npos || lineEnd + 1 == block.size()) return std::nullopt;
  return std::string(block.substr(lineEnd + 1, block.size() - lineEnd - 2));
}

}  // namespace

ResourceKeeper::ResourceKeeper(std::filesystem::path resources, Languages preferredLanguages)
    : resources_(std::move(resources)), preferredLanguages_(std::move(preferredLanguages)) {}

ResourceKeeper& ResourceKeeper::Main() {
  static Lifetime::NoDestructor<ResourceKeeper> main(
      Files::Bundle::Main().ResourcesPath(), [] { return Files::Bundle::Main().PreferredLocalizations(); });
  return *main;
}

std::string ResourceKeeper::messageFromResource(int id) {
  const ThreadSafety::MutexLock lock(mutex_);
  const std::vector<std::string> languages = preferredLanguages_();
  const std::string language = languages.empty() ? kFallbackLanguage : languages.front();
  if (const auto cached = checkMessageInCache(id, language)) return *cached;
  std::string failure = fmt::format("Failed to find resource name for id: {:x}", static_cast<unsigned>(id));
  const std::string name = resourceStringName(id).value_or("");
  if (!name.empty()) {
    std::string message = localizedMessage(name, language).value_or("");
    if (!message.empty()) {
      _countryCodeOfCache = language;
      return _resourceCache[id] = std::move(message);
    }
    failure = "Failed to find localized message for resource name: " + name;
  }
  trace::SystemLog::Error(failure);
  return failure;
}

std::optional<std::string> ResourceKeeper::checkMessageInCache(int id, const std::string& countryCode) {
  if (countryCode != _countryCodeOfCache) {
    _resourceCache.clear();
    _countryCodeOfCache.clear();
    return std::nullopt;
  }
  const auto cached = _resourceCache.find(id);
  return cached != _resourceCache.end() ? std::optional(cached->second) : std::nullopt;
}

std::optional<std::string> ResourceKeeper::resourceStringName(int id) const {
  std::error_code error;
  const std::optional<std::string> table = ReadText(resources_ / "MessagesIdName.txt", error);
  if (!table) {
    trace::SystemLog::Error("Failed to read MessagesIdName.txt file. Error: " + error.message());
    return std::nullopt;
  }
  // Deliberately a plain search: the id is also found at the end of a longer one.
  const std::string idMark = fmt::format("{} = ", id);
  const std::size_t mark = table->find(idMark);
  if (mark == std::string::npos) return std::nullopt;
  const std::size_t start = mark + idMark.size();
  const std::size_t end = table->find('\n', start);
  if (end == std::string::npos) return std::nullopt;
  return std::string(util::Trimmed(std::string_view(*table).substr(start, end - start)));
}

std::optional<std::string> ResourceKeeper::messagesMC(const std::string& countryCode) const {
  std::error_code error;
  std::optional<std::string> content = ReadText(resources_ / (countryCode + ".lproj") / "Messages.mc", error);
  if (!content) {
    trace::SystemLog::Error(fmt::format("Failed to read Messages.mc file for locale: {}. Error: {}",
                                        countryCode, error.message()));
  }
  return content;
}

std::optional<std::string> ResourceKeeper::GetLocalizedFileContents(const std::string& countryCode) const {
  std::optional<std::string> content = messagesMC(countryCode);
  const bool isEmpty = !content || content->empty();
  return isEmpty && countryCode != kFallbackLanguage ? messagesMC(kFallbackLanguage) : content;
}

std::optional<std::string> ResourceKeeper::localizedMessage(const std::string& name,
                                                            const std::string& countryCode) const {
  const std::optional<std::string> content = GetLocalizedFileContents(countryCode);
  if (!content) return std::nullopt;
  const std::size_t start = content->find(name);
  if (start == std::string::npos) return std::nullopt;
  const std::size_t end = content->find("\n.\n", start);
  if (end == std::string::npos) return std::nullopt;
  return TextOfBlock(std::string_view(*content).substr(start, end + 1 - start));
}

namespace util {

const wchar_t* MessageFromResourceW(int id) {
  struct Given {
    ThreadSafety::Mutex mutex;
    std::map<int, std::wstring> texts SR_GUARDED_BY(mutex);
  };
  static Lifetime::NoDestructor<Given> given;
  Given& all = *given;
  const ThreadSafety::MutexLock lock(all.mutex);
  std::wstring text = widen(ResourceKeeper::Main().messageFromResource(id));
  std::wstring& held = all.texts[id];
  if (held != text) held = std::move(text);
  return held.c_str();
}

}  // namespace util
