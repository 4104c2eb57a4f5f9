#pragma once

#include "platform/devicepath.h"
#include "settings/errorcatalogue.h"
#include "settings/veltasettings.h"
#include "tests/faults/trial.h"
#include "tests/support/devicetest.h"

/// SAVE in the configuration wizard.
class Saving : public Trial
{
public:
    /// \a foreign stands at the name of the new-settings file when SAVE is pressed.
    explicit Saving(const QByteArray &foreign) : foreignFile(foreign) { }

    void prepare(const DeviceRoot &root) override
    {
        root.write(Settings, StaticSettings);
        // Keeps what it is given, whole, in a place of its own.
        root.writeCommand("/bin/syscfg",
                          "{ cat \"$2\"; echo end; } >>\"$PANEL_ROOT/simulator/given\"");
    }

    Files planted() const override
    {
        return foreignFile.isEmpty() ? Files() : Files{{NewSettings, foreignFile}};
    }

    Answer run(const std::function<void()> &arm) override { return save(arm, foreignFile); }

    QStringList judge(const DeviceRoot &root, const Answer &answer) override
    {
        QStringList complaints = judgeGiven(root);
        if (answer.nResult != 0 && answer.nResult != ERR_INI_ACCESS
            && answer.nResult != ERR_INI_FORMAT) {
            complaints += QStringLiteral("result %1").arg(answer.nResult);
        }
        if ((answer.nResult == 0) != !given(root).isEmpty()) {
            complaints += QStringLiteral("result %1, but %2 applied")
                              .arg(answer.nResult)
                              .arg(given(root).isEmpty() ? "nothing" : "something");
        }
        return complaints;
    }

    QStringList judgeRestart(const DeviceRoot &root, const Answer *, bool) override
    {
        QStringList complaints = judgeGiven(root);
        const qsizetype nBefore = given(root).size();
        const auto answer = ask([] { return save([] {}, {}); }, complaints);
        if (answer && (answer->nResult != 0 || !answer->errors.isEmpty())) {
            complaints += QStringLiteral("the next SAVE ends with %1 and boxes '%2'")
                              .arg(answer->nResult)
                              .arg(answer->errors.join("', '"));
        }
        complaints += judgeGiven(root);
        if (given(root).size() != nBefore + 1) {
            complaints += "the next SAVE applies nothing";
        }
        const Files left = filesOf(root);
        if (left.size() != 1 || left[Settings] != StaticSettings) {
            complaints += QStringLiteral("left behind: ") + QStringList(left.keys()).join(u' ');
        }
        return complaints;
    }

private:
    static inline const QString Settings = "/etc/settings.ini";
    static inline const QString NewSettings = "/tmp/newsettings.ini";

    static Answer save(const std::function<void()> &arm, const QByteArray &foreign)
    {
        const BoxWatcher eyes(1);
        auto pSettings =
            std::make_unique<VeltaSettings>(Settings, NewSettings, QSettings::IniFormat);
        pSettings->init();
        pSettings->working.nNetMode = DhcpMode;
        pSettings->working.ipEntries[Dns1Entry].value = "10.0.0.53";
        if (!foreign.isEmpty()) {
            QFile file(devicePath(NewSettings));
            need(file.open(QIODevice::WriteOnly) && file.write(foreign) >= 0, file.fileName());
        }
        arm();
        Answer answer;
        answer.nResult = pSettings->saveSettings(true);
        pSettings.reset(); // may write too
        FileFaults::disarm();
        answer.errors = errorsIn(eyes);
        return answer;
    }

    /// What syscfg was given, file by file.
    static QStringList given(const DeviceRoot &root)
    {
        return QString::fromUtf8(root.read("/simulator/given")).split("end\n", Qt::SkipEmptyParts);
    }

    static QStringList judgeGiven(const DeviceRoot &root)
    {
        QStringList complaints;
        for (const QString &file : given(root)) {
            QStringList lines = file.split(u'\n', Qt::SkipEmptyParts);
            lines.sort();
            if (lines != QStringList{"[network]", "dnsserver1=10.0.0.53", "eth0.mode=dhcp"}) {
                complaints += QStringLiteral("syscfg is given '%1'").arg(file.simplified());
            }
        }
        return complaints;
    }

    const QByteArray foreignFile;
};
