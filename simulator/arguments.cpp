#include "simulator/arguments.h"

#include <cstdio>

ExitCode usageError(const QString &text)
{
    std::fprintf(stderr, "panelctl: %s (see panelctl --help)\n", qPrintable(text));
    return ExitCode::Usage;
}

ExitCode failure(const QString &text)
{
    std::fprintf(stderr, "panelctl: %s\n", qPrintable(text));
    return ExitCode::Failed;
}

std::optional<int> toNumber(const QString &text, int least, int most)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    return ok && number >= least && number <= most ? std::optional(number) : std::nullopt;
}

void Arguments::setError(const QString &text)
{
    if (sError.isEmpty()) {
        sError = text;
    }
}

QString Arguments::takeOption(const QString &name, const QString &missing)
{
    const qsizetype at = list.indexOf(name);
    if (at >= 0) {
        list.removeAt(at);
        if (at == list.size()) {
            setError(QStringLiteral("option %1 needs a value").arg(name));
            return missing;
        }
        return list.takeAt(at);
    }
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (list.at(i).startsWith(name + u'=')) {
            return list.takeAt(i).mid(name.size() + 1);
        }
    }
    return missing;
}

bool Arguments::takeFlag(const QString &name)
{
    return list.removeOne(name);
}

QString Arguments::takeChoice(const QString &name, const QStringList &choices)
{
    QString choice = takeOption(name, choices.first());
    if (!choices.contains(choice)) {
        setError(QStringLiteral("%1 '%2' is none of %3")
                     .arg(name, choice, choices.join(QStringLiteral(", "))));
    }
    return choice;
}

int Arguments::takeNumberOption(const QString &name, int missing, int least, int most)
{
    const QString text = takeOption(name, QString::number(missing));
    const auto number = toNumber(text, least, most);
    if (!number) {
        setError(QStringLiteral("%1 '%2' is no number from %3 to %4")
                     .arg(name, text)
                     .arg(least)
                     .arg(most));
    }
    return number.value_or(missing);
}

QString Arguments::take(const QString &what)
{
    if (list.isEmpty()) {
        setError(QStringLiteral("%1 is missing").arg(what));
        return {};
    }
    return list.takeFirst();
}

int Arguments::takeNumber(const QString &what, int least, int most)
{
    const QString text = take(what);
    const auto number = toNumber(text, least, most);
    if (!number) {
        setError(QStringLiteral("%1 '%2' is no number from %3 to %4")
                     .arg(what, text)
                     .arg(least)
                     .arg(most));
    }
    return number.value_or(least);
}

QStringList Arguments::takeRest()
{
    return std::exchange(list, {});
}

bool Arguments::finish()
{
    if (!list.isEmpty()) {
        setError((list.first().startsWith(u"--") ? QStringLiteral("unknown option '%1'")
                                                 : QStringLiteral("superfluous argument '%1'"))
                     .arg(list.first()));
    }
    return sError.isEmpty();
}
