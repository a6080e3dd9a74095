// The boxes in which the program speaks to the operator.

#pragma once

#include <QWidget>

#include <string_view>

#include "state/program_name.h"

namespace quorvan::ui {

enum class BoxKind { kError, kWarning, kNotice, kPlain };

// Shows a text and waits until it is confirmed.
void Tell(QWidget* parent, BoxKind kind, std::u16string_view text,
          std::u16string_view title = kProgramName);

// Asks a question; true for Yes.
bool Ask(QWidget* parent, BoxKind kind, std::u16string_view text,
         std::u16string_view title = kProgramName);

}  // namespace quorvan::ui
