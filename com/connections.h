// The outgoing side of an object: its one connection point, and events on their way to sinks.
//
// A sink is connected to every event of the object at once and called late-bound, with the fixed
// ids of the type library. Who is called is settled when an event fires: sinks may come and go
// meanwhile. What a sink answers is not looked at. The connections end with the object. Like the
// object's members, the calls here are refused with RPC_E_WRONG_THREAD on any other thread.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "com/platform.h"
#include "com/ref.h"
#include "tavolin/base/date.h"

namespace tavolin::com {

struct ClassRow;

class EventSource : public IConnectionPointContainer {
  public:
    EventSource() : point_(*this) {}
    EventSource(const EventSource&) = delete;
    EventSource& operator=(const EventSource&) = delete;

    virtual const ClassRow& row() const = 0;
    virtual IUnknown* owner() = 0;
    virtual DWORD thread() const = 0;

    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override;
    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;

  protected:
    using Connections = std::vector<std::function<void()>>;  // each ends one connection

    ~EventSource() = default;

    // Connects a sink to the library's object.
    virtual Connections Connect(const Ref<IDispatch>& /*sink*/) { return {}; }
    void DisconnectAll();

  private:
    struct Sink {
        Ref<IDispatch> sink;
        Connections connections;
    };

    // Lives and is counted with its object, but is an object of its own to COM.
    class Point : public IConnectionPoint {
      public:
        explicit Point(EventSource& source) : source_(source) {}
        STDMETHODIMP QueryInterface(REFIID iid, void** result) override;
        STDMETHODIMP_(ULONG) AddRef() override { return source_.owner()->AddRef(); }
        STDMETHODIMP_(ULONG) Release() override { return source_.owner()->Release(); }
        STDMETHODIMP GetConnectionInterface(IID* iid) override;
        STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
        STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
        STDMETHODIMP Unadvise(DWORD cookie) override;
        STDMETHODIMP EnumConnections(IEnumConnections** connections) override;

      private:
        EventSource& source_;
    };

    Point point_;
    std::map<DWORD, Sink> sinks_;
    DWORD last_cookie_ = 0;
};

// The arguments of one event, in order.
class EventArguments {
  public:
    EventArguments() = default;
    EventArguments(const EventArguments&) = delete;
    EventArguments& operator=(const EventArguments&) = delete;
    ~EventArguments();

    void Add(const std::string& text);
    void Add(Date date);
    void Add(Ref<IDispatch> object);

    void Send(IDispatch* sink, DISPID event);

  private:
    std::vector<VARIANT> values_;
};

}  // namespace tavolin::com
