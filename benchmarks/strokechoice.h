#pragma once

#include <QByteArray>

#include <random>
#include <span>

/// One key, or several held together, and for how many repeats the last one is held.
struct Stroke
{
    std::span<const int> codes; ///< of <linux/input-event-codes.h>, in the order of pressing
    int nRepeats = 0;
};

/// What somebody types who wants to get in: keys that move and press, digits of a password,
/// any other key, and the combinations that are known to open, close or stop programs. It has
/// moods, each some dozen keys long, because there are states that no even mixture reaches: what
/// leaves the on-screen keyboard is two of its keys.
class StrokeChoice
{
public:
    /// \a bDigits: false leaves out every key that is a digit.
    StrokeChoice(std::mt19937 &source, bool bWithDigits);

    /// The next stroke. Its codes are valid until the next call.
    Stroke next();
    /// Strokes to be sent in one piece, at least 1.
    int burst();
    /// Milliseconds until the next burst, 0 for at once.
    int pause();

    /// \a stroke as "29+56+14" (codes), for a report.
    static QByteArray name(const Stroke &stroke);

private:
    enum class Mood { Everything, NoEscape, Hammering, Leaving, Combinations };

    int number(int nBelow);
    void changeMood();
    std::span<const int> oneOf(std::span<const int> keys);
    std::span<const int> anyKey();

    std::mt19937 &random;
    const bool bDigits;
    Mood mood = Mood::Everything;
    int nMoodKeys = 0; ///< left of the mood
    int nLongestBurst = 1;
    int nLongestPause = 0;
    int nSingle = 0; ///< the code of a stroke of one key
};
