#pragma once

#include "tests/faults/filefaults.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

/// The files of a device by their paths behind its root.
using Files = QMap<QString, QByteArray>;

/// What a journal of file calls leaves on the disk when the process is killed, and what when the
/// power goes. A file is certain as of its last sync, a name as of the last sync of its folder;
/// all else may or may not have arrived.
class CrashModel
{
public:
    /// \a before is certain.
    CrashModel(const Files &before, const FileFaults::Journal &journal);

    /// What the page cache holds: the disk of a process that was killed.
    Files killed() const { return files(present, &Node::content); }
    /// The worst cases of a power cut, without doubles: data that was not synced is gone, and of
    /// the changes of names that were not synced all, none or the newest alone have arrived.
    QList<Files> powerCuts() const;
    /// The program has called FileFaults::mark().
    bool isMarked() const { return bMarked; }

private:
    struct Node
    {
        QByteArray content;
        QByteArray synced;
        QByteArray shortest; ///< of \a synced, as a size that has arrived without its data
    };
    using Names = QMap<QString, int>; ///< of nodes
    /// One change of names: none of it arrives without the rest.
    using Change = QList<QPair<QString, int>>;

    void replay(const FileFaults::Record &record);
    Node &nodeOf(const FileFaults::Record &record);
    int addNode(const QByteArray &content);
    void change(const Change &names);
    Files files(const Names &names, QByteArray Node::*pWhat) const;

    QList<Node> nodes;
    QMap<quint64, int> byInode;
    Names present;
    Names certain;
    QList<Change> pending;
    bool bMarked = false;
};
