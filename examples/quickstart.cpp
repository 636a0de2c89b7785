#include <iostream>

#include "tavolin/tavolin.h"

int main() {
    tavolin::CVLDBEngine engine;
    engine.LogOn("ann", "secret");
    engine.CreateNewDB("shop", "");
    engine.CreateNewPrimaryTable("Customers", {"ID", "Name", "City"});
    engine.AddRecord("Customers", 1, {"7", "Ann Smith", "Paris"});
    engine.AddRecord("Customers", 2, {"8", "Jörg Weiß", "Köln"});
    const auto found = engine.Find("WEIẞ");
    std::cout << found->Key() << ": " << found->GetRecord(1)->prop(1) << '\n';
}
