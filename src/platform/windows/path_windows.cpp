#include "platform/path.h"

#include <windows.h>

#include <shlobj.h>

#include <algorithm>
#include <memory>

#include "platform/text.h"
#include "platform/windows/wide_text.h"

namespace quorvan::platform {
namespace {

// In front of a path that the system takes as it is, of any length.
constexpr std::wstring_view kVerbatim = LR"(\\?\)";
constexpr std::wstring_view kVerbatimNetwork = LR"(\\?\UNC\)";

constexpr std::wstring_view kDevice = LR"(\\.\)";
constexpr std::wstring_view kNetwork = LR"(\\)";

// The absolute form of `path`, with '\' as the only separator; `path` itself when the system does
// not tell.
std::wstring FullPath(std::u16string_view path) {
  const std::wstring name = ToWide(path);
  if (name.starts_with(kVerbatim)) return name;
  std::wstring full(GetFullPathNameW(name.c_str(), 0, nullptr, nullptr), L'\0');
  const DWORD length =
      GetFullPathNameW(name.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
  if (length == 0 || length >= full.size()) return name;
  full.resize(length);
  return full;
}

// The folder that the system knows under `id`; empty when there is none.
std::u16string KnownFolder(const KNOWNFOLDERID& id) {
  wchar_t* path = nullptr;
  const bool found = SHGetKnownFolderPath(id, KF_FLAG_DEFAULT, nullptr, &path) == S_OK;
  const std::unique_ptr<wchar_t, void (*)(void*)> owned(path, CoTaskMemFree);
  return found ? FromWide(path) : std::u16string();
}

}  // namespace

std::u16string DesktopFolder() {
  const std::u16string desktop = KnownFolder(FOLDERID_Desktop);
  return desktop.empty() ? KnownFolder(FOLDERID_Profile) : desktop;
}

std::u16string AbsolutePath(std::u16string_view path) {
  return FromWide(FullPath(path));
}

std::optional<std::u16string> PathOfAddress(const std::string& host, const std::string& path) {
  const bool hasDrive = path.size() > 2 && path[0] == '/' && path[2] == ':';
  std::u16string local = ToUtf16(hasDrive ? path.substr(1) : path);
  std::ranges::replace(local, u'/', u'\\');
  if (local.find(u'\xFFFD') != std::u16string::npos) return std::nullopt;
  if (host.empty() || host == "localhost") return local;
  return hasDrive ? std::nullopt : std::optional(u"\\\\" + ToUtf16(host) + local);
}

std::wstring SystemPath(std::u16string_view path) {
  const std::wstring full = FullPath(path);
  if (full.size() < MAX_PATH || full.starts_with(kVerbatim) || full.starts_with(kDevice)) {
    return full;
  }
  if (full.starts_with(kNetwork)) {
    return std::wstring(kVerbatimNetwork).append(full, kNetwork.size());
  }
  return std::wstring(kVerbatim).append(full);
}

}  // namespace quorvan::platform
