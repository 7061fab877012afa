// One outgoing event interface: sinks by cookie, events fired through IDispatch::Invoke.
#include "win/ConnectionPoint.h"

#include "win/SingleInterface.h"

#include <olectl.h>

#include <new>

namespace rx9400::win {
namespace {

/// Enumerates the single connection point of an object.
class SingleConnectionPointEnumerator final : public SingleInterface<IEnumConnectionPoints> {
 public:
  explicit SingleConnectionPointEnumerator(IConnectionPoint* point, ULONG position = 0)
      : SingleInterface(IID_IEnumConnectionPoints), point_(point), position_(position) {
    point_->AddRef();
  }
  ~SingleConnectionPointEnumerator() override { point_->Release(); }

  STDMETHODIMP Next(ULONG wanted, IConnectionPoint** points, ULONG* fetched) override {
    if (points == nullptr || (wanted > 1 && fetched == nullptr)) return E_POINTER;
    ULONG count = 0;
    if (wanted > 0 && position_ == 0) {
      point_->AddRef();
      points[0] = point_;
      count = 1;
      position_ = 1;
    }
    if (fetched != nullptr) *fetched = count;
    return count == wanted ? S_OK : S_FALSE;
  }
  STDMETHODIMP Skip(ULONG count) override {
    const ULONG target = position_ + count;
    position_ = target > 1 ? 1 : target;
    return target <= 1 ? S_OK : S_FALSE;
  }
  STDMETHODIMP Reset() override {
    position_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(IEnumConnectionPoints** copy) override {
    if (copy == nullptr) return E_POINTER;
    *copy = new (std::nothrow) SingleConnectionPointEnumerator(point_, position_);
    return *copy != nullptr ? S_OK : E_OUTOFMEMORY;
  }

 private:
  IConnectionPoint* point_;
  ULONG position_;
};

}  // namespace

ConnectionPoint::ConnectionPoint(IUnknown& owner, REFIID eventsIid) : owner_(owner), eventsIid_(eventsIid) {}

ConnectionPoint::~ConnectionPoint() {
  for (auto& [cookie, sink] : sinks_) sink->Release();
}

void ConnectionPoint::fire(DISPID id, DISPPARAMS& parameters) {
  // A snapshot: a sink may advise or unadvise while it handles the event.
  std::vector<IDispatch*> snapshot;
  snapshot.reserve(sinks_.size());
  for (auto& [cookie, sink] : sinks_) {
    sink->AddRef();
    snapshot.push_back(sink);
  }
  for (IDispatch* sink : snapshot) {
    sink->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr);
    sink->Release();
  }
}

STDMETHODIMP ConnectionPoint::QueryInterface(REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IConnectionPoint)) return E_NOINTERFACE;
  *out = static_cast<IConnectionPoint*>(this);
  AddRef();
  return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionInterface(IID* iid) {
  if (iid == nullptr) return E_POINTER;
  *iid = eventsIid_;
  return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
  if (container == nullptr) return E_POINTER;
  return owner_.QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(container));
}

STDMETHODIMP ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
  if (cookie == nullptr) return E_POINTER;
  *cookie = 0;
  if (sink == nullptr) return E_POINTER;
  IDispatch* dispatch = nullptr;
  // A sink implements the event dispinterface; a plain IDispatch sink is taken too, as hosts that
  // dispatch events by DISPID only offer that.
  if (FAILED(sink->QueryInterface(eventsIid_, reinterpret_cast<void**>(&dispatch))) &&
      FAILED(sink->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)))) {
    return CONNECT_E_CANNOTCONNECT;
  }
  try {
    sinks_.emplace(nextCookie_, dispatch);
  } catch (...) {
    dispatch->Release();
    return E_OUTOFMEMORY;
  }
  *cookie = nextCookie_++;
  return S_OK;
}

STDMETHODIMP ConnectionPoint::Unadvise(DWORD cookie) {
  const auto found = sinks_.find(cookie);
  if (found == sinks_.end()) return CONNECT_E_NOCONNECTION;
  IDispatch* sink = found->second;
  sinks_.erase(found);
  sink->Release();
  return S_OK;
}

STDMETHODIMP ConnectionPoint::EnumConnections(IEnumConnections** connections) {
  if (connections == nullptr) return E_POINTER;
  *connections = nullptr;
  return E_NOTIMPL;
}

HRESULT ConnectionPoint::enumerate(IEnumConnectionPoints** points) {
  if (points == nullptr) return E_POINTER;
  *points = new (std::nothrow) SingleConnectionPointEnumerator(this);
  return *points != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT ConnectionPoint::find(REFIID iid, IConnectionPoint** point) {
  if (point == nullptr) return E_POINTER;
  *point = nullptr;
  if (!IsEqualIID(iid, eventsIid_)) return CONNECT_E_NOCONNECTION;
  AddRef();
  *point = this;
  return S_OK;
}

}  // namespace rx9400::win
