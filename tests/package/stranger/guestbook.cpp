#include <exception>
#include <iostream>
#include <memory>

#include "tavolin/tavolin.h"

class Screen : public tavolin::IUpdater {
  public:
    void Update() override { std::cout << "changed\n"; }
};

int main() {
    tavolin::CVLDBEngine engine;
    engine.LogOn("ann", "secret");
    engine.CreateNewDB("guests", "");
    engine.CreateNewPrimaryTable("Guests", {"ID", "Name"});
    engine.AddObserver(std::make_shared<Screen>(), "ann");
    engine.OnRecordAdd.Connect([&](const auto&) { engine.NotifyObservers(); });
    engine.AddRecord("Guests", 1, {"7", "Jörg Weiß"});
    for (const auto& table : engine.CVLTableSet()->NewEnum()) {
        std::cout << table->Key() << ": " << table->CVLRecordSet()->Count() << '\n';
    }
    std::cout << engine.Find("WEIẞ")->GetRecord(1)->prop(1) << '\n';
    try {
        engine.GetTable("Hosts");
    } catch (const std::exception& failure) {
        const auto* error = dynamic_cast<const tavolin::Error*>(&failure);
        std::cout << (error != nullptr ? error->source() : "a stranger's exception") << '\n';
    }
    std::cout << TAVOLIN_VERSION << '\n';
}
