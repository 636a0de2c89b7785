// What the samples in the documents find there, besides what they include themselves: everything
// runs in folders of its own, and pieces that do not make an engine get one with a little in it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "tavolin/salvage/salvage.h"
#include "tavolin/tavolin.h"

inline void Piece(int number) { std::cout << '\x01' << number << std::endl; }

// An empty folder, which becomes the current one.
inline void NewFolder() {
    static const auto root = std::filesystem::current_path();
    static int made = 0;
    const auto folder = root / ("f" + std::to_string(++made));
    std::filesystem::create_directory(folder);
    std::filesystem::current_path(folder);
}

// The database shop.cdb of ann's, saved, with orders that refer to customers.
inline void SetUp(tavolin::CVLDBEngine& engine) {
    engine.LogOn("ann", "secret");
    engine.CreateNewDB("shop", "");
    engine.CreateNewPrimaryTable("Customers", {"ID", "Name", "City"});
    engine.CreateNewPrimaryTable("Orders", {"No", "Customer", "What"});
    engine.LinkTables("Orders", "Customer", "Customers");
    engine.AddRecord("Customers", 1, {"7", "Ann Smith", "Paris"});
    engine.AddRecord("Customers", 2, {"8", "Jörg Weiß", "Köln"});
    engine.AddRecord("Orders", 1, {"1", "8", "Tea"});
    engine.AddRecord("Orders", 2, {"2", "7", "Coffee"});
    engine.SaveDB();
}

#define SAMPLE_FOLDER NewFolder();
#define SAMPLE_ENGINE        \
    NewFolder();             \
    using namespace tavolin; \
    CVLDBEngine engine;      \
    SetUp(engine);
