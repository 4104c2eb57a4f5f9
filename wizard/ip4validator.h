#pragma once

#include <QValidator>

/// Judges a dotted IPv4 address or netmask and repairs one that is nearly right.
///
/// Not attached to a line edit: users call validate() and, on Intermediate, fixup(). Texts may
/// come from an input mask, with blanks and leading zeros in their parts.
class IP4Validator : public QValidator
{
    Q_OBJECT

public:
    /// What the second argument of validate() selects; any value but Address checks a netmask.
    enum Mode { Address = 0, Netmask = 1 };

    explicit IP4Validator(QObject *parent = nullptr);
    ~IP4Validator() override;

    /// Accepts a first part of 0, for values where 0.0.0.0 stands for none. Off at first.
    void setZeroFirstOctetAllowed(bool allowed) { bZeroFirstOctetAllowed = allowed; }

    /// Judges \a input as \a mode; changes neither. An empty text is acceptable.
    State validate(QString &input, int &mode) const override;

    /// Rewrites \a input into four plain parts of 0 to 255. Parts that are empty, missing or no
    /// numbers become 0, parts beyond the fourth are dropped.
    void fixup(QString &input) const override;

private:
    bool bZeroFirstOctetAllowed = false;
};
