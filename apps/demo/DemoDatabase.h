// The demo's embedded database: an SQLite file with a customer table and its country lookup,
// created and filled from the scripts built into the program the first time the demo runs, and
// the million generated items of the combo form, made the first time that form opens.
#pragma once

#include <QString>

#include <memory>

namespace korvex::ado {
class Connection;
}

namespace demo {

// Opens the database file at `path`, creating the customer and country tables when they are
// missing, and makes the connection the application's shared one.
std::shared_ptr<korvex::ado::Connection> OpenDemoDatabase(const QString& path);

// Makes the "items" table with ItemCount generated items (ItemGenerator.h) when the database has
// none; returns whether it did. The rows are written in one transaction, so the table is either
// whole or absent, and a database that has it is never filled again.
bool EnsureItems(korvex::ado::Connection& connection);

// Where the demo keeps its database between runs.
QString DefaultDatabasePath();

}  // namespace demo
