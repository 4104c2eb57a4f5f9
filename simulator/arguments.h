#pragma once

#include <QStringList>

#include <optional>

/// What panelctl ends with.
enum class ExitCode { Done = 0, Failed = 1, Usage = 2 };

/// Prints one line for a command line that makes no sense. Nothing may have been changed yet.
ExitCode usageError(const QString &text);
/// Prints one line for something that could not be done.
ExitCode failure(const QString &text);
/// What a step that has told its failure itself comes to.
inline ExitCode done(bool success)
{
    return success ? ExitCode::Done : ExitCode::Failed;
}

/// \a text as a whole number from \a least to \a most; nothing when it is none.
std::optional<int> toNumber(const QString &text, int least, int most);

/// The words of a command, taken one after the other.
///
/// The first thing that is wrong with them is kept in error(); every later take...() then returns
/// a value without meaning. A command takes all it knows, calls finish() and only then acts.
class Arguments
{
public:
    explicit Arguments(const QStringList &words) : list(words) { }

    /// The value of the option \a name ("--ms 20" or "--ms=20"), \a missing when it is not there.
    QString takeOption(const QString &name, const QString &missing = QString());
    bool takeFlag(const QString &name);
    /// The value of the option \a name, which must be one of \a choices.
    QString takeChoice(const QString &name, const QStringList &choices);
    int takeNumberOption(const QString &name, int missing, int least, int most);

    bool isEmpty() const { return list.isEmpty(); }
    qsizetype size() const { return list.size(); }
    QString take(const QString &what);
    int takeNumber(const QString &what, int least, int most);
    /// All that is left.
    QStringList takeRest();

    /// True when nothing was wrong and nothing is left over.
    bool finish();
    QString error() const { return sError; }
    void setError(const QString &text);

private:
    QStringList list;
    QString sError;
};
