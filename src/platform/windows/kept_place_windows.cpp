#include "platform/kept_place.h"

#include <windows.h>

namespace quorvan::platform {
namespace {

constexpr wchar_t kKey[] = LR"(software\MXF_Quorvan\Window)";
constexpr wchar_t kValue[] = L"position";
static_assert(sizeof(KeptPlace) == 16);

// Opens the key of the place, or creates the key. Null when the system refuses. `*isNew` tells
// whether the key was created.
HKEY OpenKey(bool* isNew) {
  HKEY key = nullptr;
  DWORD disposition = 0;
  const LSTATUS status =
      RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                      KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &key, &disposition);
  *isNew = disposition == REG_CREATED_NEW_KEY;
  return status == ERROR_SUCCESS ? key : nullptr;
}

}  // namespace

std::optional<KeptPlace> ReadKeptPlace() {
  bool isNew = false;
  const HKEY key = OpenKey(&isNew);
  if (key == nullptr) return std::nullopt;
  KeptPlace place{};
  DWORD bytes = sizeof place;
  DWORD type = REG_NONE;
  const LSTATUS status =
      RegQueryValueExW(key, kValue, nullptr, &type, reinterpret_cast<BYTE*>(&place), &bytes);
  RegCloseKey(key);
  if (isNew) return std::nullopt;
  const bool isPlace = status == ERROR_SUCCESS && type == REG_BINARY && bytes == sizeof place;
  return isPlace ? place : KeptPlace{};
}

void WriteKeptPlace(const KeptPlace& place) {
  bool isNew = false;
  const HKEY key = OpenKey(&isNew);
  if (key == nullptr) return;
  RegSetValueExW(key, kValue, 0, REG_BINARY, reinterpret_cast<const BYTE*>(&place), sizeof place);
  RegCloseKey(key);
}

bool KeptPlaceHasFrame() {
  return true;
}

}  // namespace quorvan::platform
