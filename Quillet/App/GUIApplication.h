#pragma once

#include <QApplication>
#include <QTimer>
#include <thread>

/// The toolkit's application, without some of its faults, which gives memory back when nobody has
/// used the program for a minute.
class GUIApplication : public QApplication {
public:
    GUIApplication(int& count, char** arguments);

    bool notify(QObject* receiver, QEvent* event) override;

private:
    // Refreshes alone run less than half of the code that the start and the user's clicks do.
    QTimer untilRest;
    std::jthread trimming;
};
