#pragma once

#include <QTest>

#include <functional>

/// Sets the environment up (offscreen platform, temporary home), makes the application
/// object as the program does and runs \a run. The environment variable PANEL_TRANSLATION names a
/// compiled translation to do all that in.
int runPanelTest(int argc, char **argv, const char *name,
                 const std::function<int(int, char **)> &run);

#define PANEL_TEST_MAIN(TestClass)                                                    \
    int main(int argc, char **argv)                                                   \
    {                                                                                 \
        return runPanelTest(argc, argv, #TestClass, [](int count, char **arguments) { \
            TestClass test;                                                           \
            return QTest::qExec(&test, count, arguments);                             \
        });                                                                           \
    }
