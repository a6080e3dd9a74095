// Adds a file to the library without the window standing still.

#pragma once

#include <QWidget>

#include <string>

#include "state/app_state_info.h"
#include "wav/wav_header.h"

namespace quorvan::ui {

// AddWavFile of the file at `path` on a thread of its own. A file whose header takes longer to find
// than an operator notices gets a dialog over `parent` with a button that gives the search up.
WavResult AddWavFileWatched(const std::u16string& path, APP_STATE_INFO* app, QWidget* parent);

}  // namespace quorvan::ui
