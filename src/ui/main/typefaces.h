// The typefaces of the program, the first choice first. tools/setup.sh installs Inconsolata and
// IPAPGothic.

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
