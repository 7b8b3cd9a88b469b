// The demo's embedded database: an SQLite file with a customer table, created and filled from
// the script built into the program the first time the demo runs.
#pragma once

#include <QString>

#include <memory>

namespace korvex::ado {
class Connection;
}

namespace demo {

// Opens the database file at `path`, creating the customer table when the file is new, and
// makes the connection the application's shared one.
std::shared_ptr<korvex::ado::Connection> OpenDemoDatabase(const QString& path);

// Where the demo keeps its database between runs.
QString DefaultDatabasePath();

}  // namespace demo
