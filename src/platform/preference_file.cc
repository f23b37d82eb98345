// Reading and writing the preference file: the line format, and the replacement of the
// whole file through a temporary file in its folder.
#include "platform/preference_file.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "platform/file.h"

namespace qm::platform {
namespace {

constexpr std::string_view kStringMark = "string:";
constexpr std::string_view kBinaryMark = "binary:";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kHeader =
    "# Quillmark preferences, one value a line: Name=string:TEXT or Name=binary:HEXBYTES\n";
constexpr char kHexDigits[] = "0123456789abcdef";

bool IsValidName(std::string_view name) {
  if (name.empty() || name.front() == '#') return false;
  for (const char c : name) {
    if (c < 0x20 || c > 0x7E || c == '=') return false;
  }
  return true;
}

// The length of the well-formed UTF-8 character at the start of `s`, or 0 when there is
// none: a stray continuation byte, a cut sequence, an overlong form, a surrogate or a value
// beyond the last code point.
std::size_t Utf8CharLength(std::string_view s) {
  const auto lead = static_cast<unsigned char>(s.front());
  std::size_t n = 0;
  std::uint32_t cp = 0;
  if ((lead & 0xE0) == 0xC0) {
    n = 2;
    cp = lead & 0x1Fu;
  } else if ((lead & 0xF0) == 0xE0) {
    n = 3;
    cp = lead & 0x0Fu;
  } else if ((lead & 0xF8) == 0xF0) {
    n = 4;
    cp = lead & 0x07u;
  } else {
    return 0;
  }
  if (s.size() < n) return 0;
  for (std::size_t k = 1; k < n; ++k) {
    const auto c = static_cast<unsigned char>(s[k]);
    if ((c & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (c & 0x3Fu);
  }
  static constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (cp < kSmallest[n] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  return n;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

void AppendHex(std::string& out, unsigned char byte) {
  out += kHexDigits[byte >> 4];
  out += kHexDigits[byte & 0x0F];
}

void AppendEscapedText(std::string& out, std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c >= 0x80) {
      if (const std::size_t n = Utf8CharLength(text.substr(i)); n > 0) {
        out.append(text.substr(i, n));
        i += n;
        continue;
      }
    }
    if (c == '\\') {
      out += "\\\\";
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c < 0x20 || c >= 0x7F) {
      out += "\\x";
      AppendHex(out, c);
    } else {
      out += static_cast<char>(c);
    }
    ++i;
  }
}

std::optional<std::string> UnescapeText(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      out += text[i];
      continue;
    }
    if (++i == text.size()) return std::nullopt;
    switch (text[i]) {
      case '\\':
        out += '\\';
        break;
      case 'n':
        out += '\n';
        break;
      case 'r':
        out += '\r';
        break;
      case 'x': {
        if (text.size() - i < 3) return std::nullopt;
        const int high = HexValue(text[i + 1]);
        const int low = HexValue(text[i + 2]);
        if (high < 0 || low < 0) return std::nullopt;
        out += static_cast<char>(high * 16 + low);
        i += 2;
        break;
      }
      default:
        return std::nullopt;
    }
  }
  return out;
}

std::optional<std::string> UnhexBytes(std::string_view hex) {
  if (hex.size() % 2 != 0) return std::nullopt;
  std::string out;
  out.reserve(hex.size() / 2);
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    const int high = HexValue(hex[i]);
    const int low = HexValue(hex[i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    out += static_cast<char>(high * 16 + low);
  }
  return out;
}

std::optional<PreferenceValue> ParseLine(std::string_view line) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  PreferenceValue value;
  value.name = line.substr(0, equals);
  if (!IsValidName(value.name)) return std::nullopt;
  const std::string_view rest = line.substr(equals + 1);
  std::optional<std::string> bytes;
  if (rest.starts_with(kStringMark)) {
    value.kind = PreferenceKind::kString;
    bytes = UnescapeText(rest.substr(kStringMark.size()));
  } else if (rest.starts_with(kBinaryMark)) {
    value.kind = PreferenceKind::kBinary;
    bytes = UnhexBytes(rest.substr(kBinaryMark.size()));
  }
  if (!bytes) return std::nullopt;
  value.bytes = std::move(*bytes);
  return value;
}

std::string Format(const std::vector<PreferenceValue>& values) {
  std::string out(kHeader);
  for (const PreferenceValue& value : values) {
    out += value.name;
    out += '=';
    if (value.kind == PreferenceKind::kString) {
      out += kStringMark;
      AppendEscapedText(out, value.bytes);
    } else {
      out += kBinaryMark;
      for (const char byte : value.bytes) AppendHex(out, static_cast<unsigned char>(byte));
    }
    out += '\n';
  }
  return out;
}

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t put = ::write(fd, bytes.data(), bytes.size());
    if (put < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(put));
  }
  return true;
}

std::string HomeFolder() {
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
  long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384);
  passwd entry;
  passwd* found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
      found != nullptr && found->pw_dir != nullptr) {
    return found->pw_dir;
  }
  return ".";
}

}  // namespace

std::string PreferenceFile::DefaultPath() {
  std::string config;
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg != nullptr && xdg[0] == '/') {
    config = xdg;
  } else {
    config = HomeFolder() + "/.config";
  }
  return config + "/Corvane Software/Quillmark.conf";
}

PreferenceFile::LoadResult PreferenceFile::Load() {
  values_.clear();
  std::string text;
  try {
    const auto file = FileSystem::Real().Open(path_, OpenMode::kRead);
    text.resize(file->Length());
    text.resize(file->ReadAt(0, text.data(), text.size()));
  } catch (const FileError& e) {
    return e.code() == ENOENT ? LoadResult::kMissing : LoadResult::kUnreadable;
  }
  std::string_view rest(text);
  if (rest.starts_with(kByteOrderMark)) rest.remove_prefix(kByteOrderMark.size());
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty() || line.front() == '#') continue;
    if (auto value = ParseLine(line)) Set(value->name, value->kind, std::move(value->bytes));
  }
  return LoadResult::kRead;
}

bool PreferenceFile::Save() const {
  namespace fs = std::filesystem;
  const fs::path folder = fs::path(path_).parent_path();
  if (!folder.empty()) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) return false;
  }
  std::string temp = path_ + ".XXXXXX";
  const int fd = ::mkostemp(temp.data(), O_CLOEXEC);
  if (fd < 0) return false;
  bool ok = WriteAll(fd, Format(values_)) && ::fsync(fd) == 0;
  ok = ::close(fd) == 0 && ok;
  ok = ok && ::rename(temp.c_str(), path_.c_str()) == 0;
  if (!ok) {
    ::unlink(temp.c_str());
    return false;
  }
  // The new name is on the device only once the folder is; a failure here leaves the file
  // written and in place, so it is not reported.
  const int dir = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dir >= 0) {
    (void)::fsync(dir);
    ::close(dir);
  }
  return true;
}

const PreferenceValue* PreferenceFile::Find(std::string_view name) const {
  for (const PreferenceValue& value : values_) {
    if (value.name == name) return &value;
  }
  return nullptr;
}

std::optional<std::string> PreferenceFile::GetString(std::string_view name) const {
  const PreferenceValue* value = Find(name);
  if (value == nullptr || value->kind != PreferenceKind::kString) return std::nullopt;
  return value->bytes;
}

std::optional<std::vector<std::uint8_t>> PreferenceFile::GetBinary(std::string_view name) const {
  const PreferenceValue* value = Find(name);
  if (value == nullptr || value->kind != PreferenceKind::kBinary) return std::nullopt;
  return std::vector<std::uint8_t>(value->bytes.begin(), value->bytes.end());
}

void PreferenceFile::SetString(std::string_view name, std::string_view text) {
  Set(name, PreferenceKind::kString, std::string(text));
}

void PreferenceFile::SetBinary(std::string_view name, std::span<const std::uint8_t> bytes) {
  Set(name, PreferenceKind::kBinary, std::string(bytes.begin(), bytes.end()));
}

void PreferenceFile::Set(std::string_view name, PreferenceKind kind, std::string bytes) {
  if (!IsValidName(name)) {
    throw std::invalid_argument("not a preference name: " + std::string(name));
  }
  for (PreferenceValue& value : values_) {
    if (value.name == name) {
      value.kind = kind;
      value.bytes = std::move(bytes);
      return;
    }
  }
  values_.push_back({std::string(name), kind, std::move(bytes)});
}

}  // namespace qm::platform
