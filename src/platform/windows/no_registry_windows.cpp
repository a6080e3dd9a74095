#include "platform/no_registry.h"

#include <windows.h>

#include "platform/windows/wide_text.h"

namespace quorvan::platform {
namespace {

// The key that stands in for the user's part, named after the process.
std::wstring StandInName() {
  return LR"(software\MXF_Quorvan_)" + std::to_wstring(GetCurrentProcessId());
}

void Restore(void* key) {
  RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
  RegCloseKey(static_cast<HKEY>(key));
  RegDeleteTreeW(HKEY_CURRENT_USER, StandInName().c_str());
}

// Creates a key in memory alone, or opens the key; null when the system refuses.
HKEY CreateInMemory(HKEY parent, const std::wstring& path) {
  HKEY key = nullptr;
  RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr,
                  &key, nullptr);
  return key;
}

}  // namespace

NoRegistry::NoRegistry(const std::u16string& path) : key_(nullptr, Restore) {
  const std::wstring inside = ToWide(path);
  const HKEY standIn = CreateInMemory(HKEY_CURRENT_USER, StandInName());
  if (standIn == nullptr) return;
  key_.reset(standIn);
  const HKEY key = CreateInMemory(standIn, inside);
  if (key != nullptr) RegCloseKey(key);
  RegOverridePredefKey(HKEY_CURRENT_USER, standIn);
}

}  // namespace quorvan::platform
