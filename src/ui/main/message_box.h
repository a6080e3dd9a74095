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

// Asks the question before a rewrite, in large letters, with the answers No (101), which is the
// default, and Yes (102). True for Yes; Escape and the close box mean No.
bool AskFirst(QWidget* parent, std::u16string_view question, std::u16string_view title);

}  // namespace quorvan::ui
