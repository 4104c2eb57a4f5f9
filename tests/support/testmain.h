#pragma once

#include <QTest>

#include <functional>

/// Sets the environment up (offscreen platform, temporary home), makes the application
/// object as the program does and runs \a run.
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
