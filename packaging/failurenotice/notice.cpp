#include "packaging/failurenotice/notice.h"

#include "packaging/failurenotice/letters.h"

#include <algorithm>
#include <sstream>

namespace {

// In pixels of the font: a letter with the gap behind it, a line with the one below.
constexpr int Advance = LetterWidth + 1;
constexpr int LineHeight = LetterHeight + 3;
constexpr int Margin = 2; // on every side

int count(const std::vector<std::string> &lines)
{
    return static_cast<int>(lines.size());
}

/// The lines of \a paragraphs with at most \a nColumns letters each, a longer word broken.
std::vector<std::string> wrapped(const std::vector<std::string> &paragraphs, std::size_t nColumns)
{
    std::vector<std::string> lines;
    for (const std::string &paragraph : paragraphs) {
        lines.emplace_back();
        std::istringstream words(paragraph);
        for (std::string word; words >> word;) {
            if (!lines.back().empty() && lines.back().size() + 1 + word.size() > nColumns) {
                lines.emplace_back();
            }
            for (; word.size() > nColumns; word.erase(0, nColumns)) {
                lines.back() = word.substr(0, nColumns);
                lines.emplace_back();
            }
            lines.back() += (lines.back().empty() ? "" : " ") + word;
        }
    }
    return lines;
}

/// Whether no word of \a paragraphs has to be broken.
bool allWordsFit(const std::vector<std::string> &paragraphs, std::size_t nColumns)
{
    return std::ranges::all_of(paragraphs, [nColumns](const std::string &paragraph) {
        std::istringstream words(paragraph);
        std::string word;
        while (words >> word && word.size() <= nColumns) { }
        return !words;
    });
}

} // namespace

NoticeLayout layOut(const std::vector<std::string> &paragraphs, int nWidth, int nHeight)
{
    NoticeLayout layout;
    for (int nScale = std::max(1, nWidth / Advance); nScale > 0; --nScale) {
        const int nColumns = std::max(1, (nWidth / nScale - 2 * Margin + 1) / Advance);
        const auto columns = static_cast<std::size_t>(nColumns);
        if (nScale > 1 && !allWordsFit(paragraphs, columns)) {
            continue;
        }
        layout.lines = wrapped(paragraphs, columns);
        layout.nScale = nScale;
        if ((count(layout.lines) * LineHeight + 2 * Margin) * nScale <= nHeight) {
            break;
        }
    }
    return layout;
}

void draw(const NoticeLayout &layout, int nWidth, int nHeight,
          const std::function<void(const Box &)> &fill)
{
    const int nScale = layout.nScale;
    int nY = (nHeight - count(layout.lines) * LineHeight * nScale) / 2;
    for (const std::string &line : layout.lines) {
        int nX = Margin * nScale;
        for (const char character : line) {
            const Letter &letter = letterFor(character);
            for (int nRow = 0; nRow < LetterHeight; ++nRow) {
                for (int nColumn = 0; nColumn < LetterWidth; ++nColumn) {
                    const Box box{nX + nColumn * nScale, nY + nRow * nScale, nScale, nScale};
                    const bool bInk =
                        letter[static_cast<std::size_t>(nRow)] >> (LetterWidth - 1 - nColumn) & 1;
                    if (bInk && box.nX >= 0 && box.nY >= 0 && box.nX + nScale <= nWidth
                        && box.nY + nScale <= nHeight) {
                        fill(box);
                    }
                }
            }
            nX += Advance * nScale;
        }
        nY += LineHeight * nScale;
    }
}
