#include "tests/faults/crashmodel.h"

#include <QFile>

#include <algorithm>

using FileFaults::Record;

namespace {

constexpr int Gone = -1;

void arrive(QMap<QString, int> &names, const QList<QPair<QString, int>> &change)
{
    for (const auto &[path, nNode] : change) {
        names[path] = nNode;
        names.removeIf([](const auto &name) { return name.value() == Gone; });
    }
}

} // namespace

CrashModel::CrashModel(const Files &before, const FileFaults::Journal &journal)
{
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        present[it.key()] = addNode(it.value());
    }
    certain = present;
    for (int i = 0; i < journal.nRecords; ++i) {
        replay(journal.records[i]);
    }
}

int CrashModel::addNode(const QByteArray &content)
{
    nodes.append({content, content, content});
    return int(nodes.size()) - 1;
}

/// The node that the record is about: known by its inode, or else by its name.
CrashModel::Node &CrashModel::nodeOf(const Record &record)
{
    const QString path = QFile::decodeName(record.path);
    if (!byInode.contains(record.nNode)) {
        byInode[record.nNode] = present.contains(path) ? present[path] : addNode({});
    }
    return nodes[byInode[record.nNode]];
}

void CrashModel::replay(const Record &record)
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

void CrashModel::change(const Change &names)
{
    arrive(present, names);
    pending.append(names);
}

Files CrashModel::files(const Names &names, QByteArray Node::*pWhat) const
{
    Files result;
    for (auto it = names.cbegin(); it != names.cend(); ++it) {
        result[it.key()] = nodes[it.value()].*pWhat;
    }
    return result;
}

QList<Files> CrashModel::powerCuts() const
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
