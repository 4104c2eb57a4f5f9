#pragma once

#include "tests/faults/filefaults.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QMap>
#include <QString>

#include <algorithm>

/// The files of a device by their paths behind its root.
using Files = QMap<QString, QByteArray>;

/// What a journal of file calls leaves on the disk when the process is killed, and what when the
/// power goes. A file is certain as of its last sync, a name as of the last sync of its folder;
/// all else may or may not have arrived.
class CrashModel
{
public:
    /// \a before is certain.
    CrashModel(const Files &before, const FileFaults::Journal &journal)
    {
        for (auto it = before.cbegin(); it != before.cend(); ++it) {
            present[it.key()] = addNode(it.value());
        }
        certain = present;
        for (int i = 0; i < journal.nRecords; ++i) {
            replay(journal.records[i]);
        }
    }

    /// What the page cache holds: the disk of a process that was killed.
    Files killed() const { return files(present, &Node::content); }

    /// The worst cases of a power cut, without doubles: data that was not synced is gone, and of
    /// the changes of names that were not synced all, none or the newest alone have arrived.
    QList<Files> powerCuts() const
    {
        Names newest = certain;
        arrive(newest, pending.isEmpty() ? Change() : pending.constLast());
        QList<Files> different;
        for (const Files &cut : {files(present, &Node::shortest), files(certain, &Node::synced),
                                 files(newest, &Node::synced)}) {
            if (!different.contains(cut)) {
                different.append(cut);
            }
        }
        return different;
    }

    /// The program has called FileFaults::mark().
    bool isMarked() const { return bMarked; }

private:
    using Record = FileFaults::Record;
    struct Node
    {
        QByteArray content;
        QByteArray synced;
        QByteArray shortest; ///< of \a synced, as a size that has arrived without its data
    };
    using Names = QMap<QString, int>; ///< of nodes
    /// One change of names: none of it arrives without the rest.
    using Change = QList<QPair<QString, int>>;
    static constexpr int Gone = -1;

    static void arrive(Names &names, const Change &change)
    {
        for (const auto &[path, nNode] : change) {
            names[path] = nNode;
            names.removeIf([](const auto &name) { return name.value() == Gone; });
        }
    }

    int addNode(const QByteArray &content)
    {
        nodes.append({content, content, content});
        return int(nodes.size()) - 1;
    }

    /// The node that the record is about: known by its inode, or else by its name.
    Node &nodeOf(const Record &record)
    {
        const QString path = QFile::decodeName(record.path);
        if (!byInode.contains(record.nNode)) {
            byInode[record.nNode] = present.contains(path) ? present[path] : addNode({});
        }
        return nodes[byInode[record.nNode]];
    }

    void replay(const Record &record)
    {
        const QString path = QFile::decodeName(record.path);
        switch (record.kind) {
        case Record::Created:
            byInode[record.nNode] = addNode({});
            change({{path, byInode[record.nNode]}});
            break;
        case Record::Written: {
            Node &node = nodeOf(record);
            node.content = QByteArray(record.content, record.nSize);
            node.shortest.truncate(record.nSize);
            break;
        }
        case Record::Synced: {
            Node &node = nodeOf(record);
            node.synced = node.shortest = node.content;
            break;
        }
        case Record::Renamed:
            change({{path, Gone}, {QFile::decodeName(record.target), present.value(path, Gone)}});
            break;
        case Record::Unlinked:
            change({{path, Gone}});
            break;
        case Record::FolderSynced:
            pending.removeIf([&](const Change &names) {
                const bool bArrives =
                    std::any_of(names.cbegin(), names.cend(), [&path](const auto &name) {
                        return name.first.section(u'/', 0, -2) == path;
                    });
                if (bArrives) {
                    arrive(certain, names);
                }
                return bArrives;
            });
            break;
        case Record::Marked:
            bMarked = true;
            break;
        }
    }

    void change(const Change &names)
    {
        arrive(present, names);
        pending.append(names);
    }

    Files files(const Names &names, QByteArray Node::*pWhat) const
    {
        Files result;
        for (auto it = names.cbegin(); it != names.cend(); ++it) {
            result[it.key()] = nodes[it.value()].*pWhat;
        }
        return result;
    }

    QList<Node> nodes;
    QMap<quint64, int> byInode;
    Names present;
    Names certain;
    QList<Change> pending;
    bool bMarked = false;
};
