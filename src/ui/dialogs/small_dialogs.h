// The dialogs that only show or set a few values. Each function returns when its dialog is closed.

#pragma once

#include <QWidget>

#include "state/app_state_info.h"

namespace quorvan::ui {

// Shows the three settings of the program, and stores them in `app` when the operator confirms.
void ShowSettings(APP_STATE_INFO* app, QWidget* parent);

// Shows the clip's file, dates, writing application, UMIDs and element sizes in fields whose text
// can be copied.
void ShowMetaInformation(const APP_STATE_INFO& app, QWidget* parent);

// Shows name and version of the program.
void ShowAbout(QWidget* parent);

}  // namespace quorvan::ui
