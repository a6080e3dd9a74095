// The dialogs that only show or set a few values.

#pragma once

#include <QWidget>

#include "state/app_state_info.h"

namespace quorvan::ui {

// The three settings of the program.
void ShowSettings(APP_STATE_INFO* app, QWidget* parent);

// The identity of the loaded clip, in fields that can be copied.
void ShowMetaInformation(const APP_STATE_INFO& app, QWidget* parent);

void ShowAbout(QWidget* parent);

}  // namespace quorvan::ui
