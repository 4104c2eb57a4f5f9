#pragma once

// What most source files include, and no more: reading a precompiled header costs every one of them
// time and memory in proportion to its size. For C++ targets that use Qt Widgets.

#include <QApplication>
#include <QByteArray>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QString>
#include <QTimer>
#include <QWizard>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
