#pragma once

class QApplication;

namespace platform {

/// Style, font, Portuguese locale, standard button texts and the queue of keys and clicks of the whole program, and the
/// number locale that the database drivers need. Call once, right after the application object is made; tests call it
/// too.
void prepareApplication(QApplication& application);

} // namespace platform
