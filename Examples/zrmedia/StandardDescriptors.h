#pragma once

#include <QByteArrayView>

/// Lets the descriptors 0 to 2 that the caller has closed stand for nothing: writing to them, or reading from 0, goes
/// on failing, but no file that is opened later gets their numbers, and with them what is meant for somebody else. To
/// be called before anything is opened.
void reserveStandardDescriptors();

/// Whether somebody looks at standard error.
bool standardErrorIsTerminal();
/// Whether somebody looks at standard output.
bool standardOutputIsTerminal();

/// Writes to standard error, without buffering, whatever `QuietStandardError` there is; what cannot be written is lost.
/// May be called in a signal handler and on any thread.
void writeToStandardError(QByteArrayView bytes);

/// While one lives, nothing but `writeToStandardError` reaches standard error. Decoders of pictures and the libraries
/// behind them tell of damaged files there, in words of their own and without the file's name. One at a time.
class QuietStandardError
{
public:
    QuietStandardError();
    ~QuietStandardError();
    QuietStandardError(const QuietStandardError &) = delete;
    QuietStandardError &operator=(const QuietStandardError &) = delete;
};
