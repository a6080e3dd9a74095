// The typefaces of the program, the first choice first. The last but one is the typeface that the
// project's own set-up installs.

#pragma once

#include <QStringList>

namespace quorvan::ui {

inline QStringList FixedPitchTypefaces() {
  return {"Consolas", "Inconsolata", "DejaVu Sans Mono", "monospace"};
}

inline QStringList JapaneseTypefaces() {
  return {"Meiryo", "メイリオ", "IPAPGothic", "IPAGothic", "sans-serif"};
}

}  // namespace quorvan::ui
