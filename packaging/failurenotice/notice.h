#pragma once

#include <functional>
#include <string>
#include <vector>

/// A rectangle of pixels, from the upper left corner of a screen.
struct Box
{
    int nX = 0;
    int nY = 0;
    int nWidth = 0;
    int nHeight = 0;
};

/// How a text stands on a screen: its lines and the size of a pixel of its letters, which is the
/// largest with which all of it is on the screen.
struct NoticeLayout
{
    std::vector<std::string> lines;
    int nScale = 1;
};

/// \a paragraphs, each beginning a line, on a screen of \a nWidth by \a nHeight pixels.
NoticeLayout layOut(const std::vector<std::string> &paragraphs, int nWidth, int nHeight);

/// Has \a fill called with every box of pixels that the letters consist of; all of them lie on the
/// screen.
void draw(const NoticeLayout &layout, int nWidth, int nHeight,
          const std::function<void(const Box &)> &fill);
