#pragma once

/// What became of a save of the settings.
struct SaveResult
{
    enum Outcome {
        Saved, ///< and applied, where that was asked for
        NothingToDo,
        /// Nothing is applied and no file left. nCode: ERR_INI_ACCESS when the file cannot be
        /// written and read again as it was meant, ERR_INI_FORMAT when it can be read but makes no
        /// sense.
        NotWritten,
        ToolFailed, ///< The operator knows. nCode: the tool's result, which may be any number.
    };

    Outcome outcome = Saved;
    int nCode = 0;

    int described() const { return outcome == NothingToDo ? 1 : nCode; }
};
