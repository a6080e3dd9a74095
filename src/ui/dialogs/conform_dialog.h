// Offers a conformed copy of a clip that the analysis has refused, and makes the copy while a
// dialog shows its progress.

#pragma once

#include <QWidget>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "conform/conform.h"

namespace quorvan::ui {

// Asks whether a conformed copy of the clip at `clip`, an absolute path, shall be made, and where.
// Makes the copy, and tells the operator how that has ended. After a fault that another place can
// avoid, asks for the place again. `setStatus` writes the first field of the status bar.
// Returns the path of the copy; nothing when there is no copy.
std::optional<std::u16string> OfferConformedCopy(
    const std::u16string& clip, const std::function<void(std::u16string_view)>& setStatus,
    QWidget* parent);

// The message that the conformed copy of the clip at `clip` is made, with a line for each mend. It
// shows the last component of `clip`, as NotConformedMessage does.
std::u16string ConformedMessage(std::u16string_view clip, const std::vector<MendNote>& mended);

// The message why there is no conformed copy of the clip at `clip`; `result` has a fault.
std::u16string NotConformedMessage(std::u16string_view clip, const ConformResult& result);

}  // namespace quorvan::ui
