// Converts text between the records (UTF-16) and Qt.

#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace quorvan::ui {

inline QString ToQString(std::u16string_view text) {
  return QString(reinterpret_cast<const QChar*>(text.data()), static_cast<qsizetype>(text.size()));
}

inline std::u16string FromQString(const QString& text) {
  return text.toStdU16String();
}

// The rich text with which a tool tip shows `text` as it stands, marks such as "<" included.
inline QString TipOf(const QString& text) {
  return "<qt>" + text.toHtmlEscaped() + "</qt>";
}

}  // namespace quorvan::ui
