// One outgoing event interface of a COM object: the sinks advised on it, by cookie, and the firing of
// an event to every one of them through IDispatch::Invoke.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <map>
#include <vector>

namespace rx9400::win {

class ConnectionPoint final : public IConnectionPoint {
 public:
  /// `owner` is the object the connection point belongs to (its container): the connection point lives
  /// and dies with it, so its references are the owner's.
  ConnectionPoint(IUnknown& owner, REFIID eventsIid);
  ~ConnectionPoint();
  ConnectionPoint(const ConnectionPoint&) = delete;
  ConnectionPoint& operator=(const ConnectionPoint&) = delete;

  /// Calls the event `id` on every advised sink, in the order they were advised. A sink that fails
  /// or disconnects itself during the call does not stop the others.
  void fire(DISPID id, DISPPARAMS& parameters);
  /// The number of advised sinks.
  std::size_t sinkCount() const { return sinks_.size(); }

  // IUnknown: the connection point answers for itself; its lifetime is the owner's.
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override;
  STDMETHODIMP_(ULONG) AddRef() override { return owner_.AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return owner_.Release(); }

  // IConnectionPoint
  STDMETHODIMP GetConnectionInterface(IID* iid) override;
  STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
  STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
  STDMETHODIMP Unadvise(DWORD cookie) override;
  STDMETHODIMP EnumConnections(IEnumConnections** connections) override;

  /// The container's answers for an object with this one connection point.
  HRESULT enumerate(IEnumConnectionPoints** points);
  HRESULT find(REFIID iid, IConnectionPoint** point);

 private:
  IUnknown& owner_;
  const IID& eventsIid_;
  std::map<DWORD, IDispatch*> sinks_;
  DWORD nextCookie_ = 1;
};

}  // namespace rx9400::win
