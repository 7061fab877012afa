// Notice boxes on the MsgForm server's forms (MsgFormClient.h).
//
// The form lives in another process, so every call on it is a round trip during which this thread's
// apartment may take incoming calls: an event of this box or of another one, whose handler may close
// and destroy this box. Everything a call needs afterwards is therefore held by the link, a COM object
// that the box and each call in progress keep alive, and never by the box itself.
#include "win/MsgFormClient.h"

#include <windows.h>

#include <ocidl.h>

#include <new>
#include <string>
#include <utility>

#include "win/ComSupport.h"
#include "win/MsgForm_h.h"
#include "win/SingleInterface.h"

namespace rx9400::win {
namespace {

std::string hresultText(HRESULT hr) {
  char text[16] = {};
  wsprintfA(text, "0x%08lX", static_cast<unsigned long>(hr));
  return text;
}

/// The tie to one form: the form, the connection point the link is advised on, and the handlers its
/// events call. It is the event sink too, and counts as a live object of the module while the server
/// may still hold it.
class MsgFormLink final : public SingleInterface<IDispatch> {
 public:
  MsgFormLink(std::function<void()> onButton1, std::function<void()> onButton2)
      : SingleInterface(DIID__IMessageFormEvents),
        onButton1_(std::move(onButton1)),
        onButton2_(std::move(onButton2)) {
    objectCreated();
  }
  MsgFormLink(const MsgFormLink&) = delete;
  MsgFormLink& operator=(const MsgFormLink&) = delete;

  /// Creates the form and advises this link on its events.
  HRESULT connect(REFCLSID classId) {
    HRESULT hr = CoCreateInstance(classId, nullptr, CLSCTX_LOCAL_SERVER, IID_IMessageForm,
                                  reinterpret_cast<void**>(&form_));
    IConnectionPointContainer* container = nullptr;
    if (SUCCEEDED(hr))
      hr = form_->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&container));
    if (SUCCEEDED(hr)) {
      hr = container->FindConnectionPoint(DIID__IMessageFormEvents, &point_);
      container->Release();
    }
    if (SUCCEEDED(hr)) hr = point_->Advise(static_cast<IDispatch*>(this), &cookie_);
    if (FAILED(hr)) end(false);
    return hr;
  }

  /// One call on the form; a failure ends the link and throws NoticeBoxFailure, which ends the member
  /// that made the call. Nothing happens once the link has ended.
  template <typename Call>
  void call(const char* member, Call&& body) {
    IMessageForm* form = form_;
    if (form == nullptr) return;
    AddRef();  // the box may be destroyed during the call: this link stays until it returns
    form->AddRef();
    const HRESULT hr = body(form);
    form->Release();
    const bool failed = FAILED(hr) && form_ == form;
    if (failed) end(false);
    Release();
    if (failed) fail(member, hr);
  }

  /// Stops the events, closes the form and lets it go. `reachable`: the server still answers, so the
  /// form is told; otherwise the server's hold on this link is cut here. Answers the result of the
  /// form's closing (S_OK when there was nothing to close).
  HRESULT end(bool reachable) {
    onButton1_ = nullptr;  // no handler runs from here on, even for an event already on its way
    onButton2_ = nullptr;
    IConnectionPoint* point = std::exchange(point_, nullptr);
    IMessageForm* form = std::exchange(form_, nullptr);
    if (point == nullptr && form == nullptr) return S_OK;  // ended before
    bool released = false;
    if (point != nullptr) {
      released = reachable && SUCCEEDED(point->Unadvise(cookie_));
      point->Release();
    }
    HRESULT closed = S_OK;
    if (form != nullptr) {
      if (reachable) closed = form->CloseForm();
      form->Release();
    }
    if (!released && calls_ == 0) CoDisconnectObject(static_cast<IDispatch*>(this), 0);
    return closed;
  }

  [[noreturn]] static void fail(const char* member, HRESULT hr) {
    const std::string why = "the MsgForm server failed the call (" + hresultText(hr) + "); box ended";
    reportTrappedFailure(member, why.c_str());
    throw NoticeBoxFailure(std::string(member) + ": " + why);
  }

  // IDispatch: the events come by DISPID (Button1Click 1, Button2Click 2).
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** typeInfo) override {
    if (typeInfo != nullptr) *typeInfo = nullptr;
    return E_NOTIMPL;
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                      UINT*) override {
    if (result != nullptr) VariantInit(result);
    if (id != 1 && id != 2) return DISP_E_MEMBERNOTFOUND;
    // A copy, and this link held: the handler may close and destroy the box.
    AddRef();
    ++calls_;
    try {
      const std::function<void()> handler = id == 1 ? onButton1_ : onButton2_;
      if (handler) handler();
    } catch (...) {
    }
    --calls_;
    Release();
    return S_OK;
  }

 private:
  ~MsgFormLink() override { objectDestroyed(); }

  std::function<void()> onButton1_;
  std::function<void()> onButton2_;
  IMessageForm* form_ = nullptr;
  IConnectionPoint* point_ = nullptr;
  DWORD cookie_ = 0;
  int calls_ = 0;  ///< events being handled
};

class MsgFormBox final : public NoticeBox {
 public:
  explicit MsgFormBox(MsgFormLink* link) : link_(link) {}
  ~MsgFormBox() override {
    link_->end(true);
    link_->Release();
  }
  MsgFormBox(const MsgFormBox&) = delete;
  MsgFormBox& operator=(const MsgFormBox&) = delete;

  void show() override {
    link_->call("ShowForm", [](IMessageForm* form) {
      CoAllowSetForegroundWindow(form, nullptr);  // the form may come to the front; refused: stays behind
      return form->ShowForm();
    });
  }
  void close() override {
    if (const HRESULT hr = link_->end(true); FAILED(hr)) MsgFormLink::fail("CloseForm", hr);
  }
  void setHeading(const std::string& text) override { set("SetHeading", &IMessageForm::SetHeading, text); }
  void setMessage(const std::string& text) override { set("SetMessage", &IMessageForm::SetMessage, text); }
  void setButton1(const std::string& text) override {
    set("SetButton1Text", &IMessageForm::SetButton1Text, text);
  }
  void setButton2(const std::string& text) override {
    set("SetButton2Text", &IMessageForm::SetButton2Text, text);
  }
  void setCaption(const std::string& text) override { set("SetCaption", &IMessageForm::SetCaption, text); }

 private:
  // Nothing of the box is used after the call: a handler run meanwhile may have destroyed it.
  void set(const char* member, HRESULT (STDMETHODCALLTYPE IMessageForm::*setter)(BSTR),
           const std::string& text) {
    BSTR value = toBstr(text);
    link_->call(member, [&](IMessageForm* form) { return (form->*setter)(value); });
    SysFreeString(value);
  }

  MsgFormLink* link_;
};

}  // namespace

std::unique_ptr<NoticeBox> createMsgFormBox(const std::function<void()>& onButton1,
                                            const std::function<void()>& onButton2) {
  CLSID classId{};
  if (FAILED(CLSIDFromProgID(kMsgFormProgId, &classId))) return nullptr;  // not installed here
  auto* link = new MsgFormLink(onButton1, onButton2);
  if (const HRESULT hr = link->connect(classId); FAILED(hr)) {
    reportTrappedFailure(
        "MsgForm.MessageForm",
        ("registered, not created (" + hresultText(hr) + "): the built-in box instead").c_str());
    link->Release();
    return nullptr;
  }
  std::unique_ptr<NoticeBox> box(new (std::nothrow) MsgFormBox(link));
  if (box == nullptr) {
    link->end(true);
    link->Release();
  }
  return box;
}

}  // namespace rx9400::win
