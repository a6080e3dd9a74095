// Message boxes for the operator.

#pragma once

#include <QWidget>

#include <string_view>

#include "state/program_name.h"

namespace quorvan::ui {

enum class BoxKind { kError, kWarning, kNotice, kPlain };

// Shows a text and returns when the operator has closed the box.
void Tell(QWidget* parent, BoxKind kind, std::u16string_view text,
          std::u16string_view title = kProgramName);

// Asks a question with the answers Yes and No; true for Yes. The box closes only with an answer.
bool Ask(QWidget* parent, BoxKind kind, std::u16string_view text,
         std::u16string_view title = kProgramName);

}  // namespace quorvan::ui
