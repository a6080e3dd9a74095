// The faces in which the program writes: first choice first; the last but one is what the project's
// own set-up installs.

#pragma once

#include <QStringList>

namespace quorvan::ui {

inline QStringList FixedPitchFaces() {
  return {"Consolas", "Inconsolata", "DejaVu Sans Mono", "monospace"};
}

inline QStringList JapaneseFaces() {
  return {"Meiryo", "メイリオ", "IPAPGothic", "IPAGothic", "sans-serif"};
}

}  // namespace quorvan::ui
