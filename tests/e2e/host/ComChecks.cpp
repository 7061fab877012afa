// Checks of the plug-in's COM contract as the executive meets it: creation by ProgID, class and event
// information, connection points, QueryInterface, names and DISPIDs, unloading, and the way to the
// device library.
#include <windows.h>

#include <objbase.h>
#include <ocidl.h>
#include <oleauto.h>
#include <olectl.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "Automation.h"
#include "Checks.h"
#include "RecordingSink.h"
#include "SimulatorAccess.h"
#include "win/TamsaRX9400VTI_h.h"

namespace rx9400::e2e {
namespace {

constexpr wchar_t kQueryProgId[] = L"TamsaRX9400VTI.CRX9400Query";
constexpr wchar_t kInstrumentProgId[] = L"TamsaRX9400VTI.CRX9400VTI";
constexpr wchar_t kStoreProgId[] = L"TamsaRX9400VTI.CStoreDetectorType";
constexpr wchar_t kPluginFile[] = L"TamsaRX9400VTI.dll";

// An interface no class of the plug-in has.
const IID kForeignIid = {0x6d1f0a3e, 0x1b7c, 0x4f5e, {0x9a, 0x11, 0x52, 0x3c, 0x7e, 0x90, 0x2d, 0x41}};

struct ClassEntry {
  const wchar_t* progId;
  const CLSID* classId;
  const IID* defaultInterface;
  bool raisesEvents;
};

const ClassEntry kClasses[] = {
    {kQueryProgId, &CLSID_CRX9400Query, &IID__CRX9400Query, false},
    {kInstrumentProgId, &CLSID_CRX9400VTI, &IID__CRX9400VTI, true},
    {kStoreProgId, &CLSID_CStoreDetectorType, &IID__CStoreDetectorType, false},
};

// The members in interface order, separated by blanks: the executive binds to these names, and
// DISPIDs count from 1.
constexpr wchar_t kQueryMembers[] =
    L"RegisterApp CloseApp ScanAndConnectToDetector IsDetectorConnected SendDetectorType ResetTheDetectors";
constexpr wchar_t kInstrumentMembers[] =
    L"pChargingStatus pPercentageCharge pResolution pCurrentMode pCurrentSettings pGetExposureTime "
    L"pGetExposurekVp InitTimer CheckDetectorPowerStatus GetWaveformInSecs CheckDataStatus DetectorWakeUp "
    L"EnableMeasurements GetNumberOfTargetFilters GetValidTargetFilters GetDefaultTargetFilterName "
    L"UpdateDefaultTargetFilterInSettings ChangeAllsettings ChangeDetectorSetup ChangeDetectorMode "
    L"ChangeSettings pDoseUnits pDoseRateUnits pFluoroType pTimeUnit pPercentKV pDelay pIncludeDelay "
    L"pTargetFilter pSerialNumber pFirmWareVersion IsDetectorConnected GetWaveformInMilliSec "
    L"pMeasurementStatus CheckDetectorStatus Val_OS CheckConnectionStatus CloseWindow CheckSleepStatus "
    L"GetDetectorType GetIonChambers GetIonChamberInfo CongiureDoseDetector ShowDosimeterMode "
    L"DisplayIonChamber ShowDosimeterIonChamber SendCompareData SetMasInputtype GetIonChamberName "
    L"GetCalFactor GetCalConst mAsExposureFinish DetectorExposureFinish pDetectorName ResetTheFlags";

std::vector<std::wstring> words(const wchar_t* text) {
  std::vector<std::wstring> result;
  std::wstring word;
  for (const wchar_t* c = text;; ++c) {
    if (*c == L' ' || *c == L'\0') {
      if (!word.empty()) result.push_back(word);
      word.clear();
      if (*c == L'\0') return result;
    } else {
      word += *c;
    }
  }
}

struct EventEntry {
  const wchar_t* name;
  UINT parameters;
  bool stringsByReference;
};

// DISPIDs 1 to 10 in this order.
const EventEntry kEvents[] = {
    {L"IncrementWaveCount", 0, false}, {L"ZeroingmAs", 1, false},
    {L"AddWakeUpButton", 1, false},    {L"EnableStopButton", 1, false},
    {L"DataReady", 10, true},          {L"CheckExposureWaveform", 1, false},
    {L"DisplayErrorMsg", 3, false},    {L"DisplaySensorResetMsg", 1, false},
    {L"TestSWDataReady", 7, false},    {L"TestmAsDataReady", 4, false},
};

/// Frees a TYPEATTR on every way out.
class TypeAttributes {
 public:
  explicit TypeAttributes(ITypeInfo* info) : info_(info) {
    expectHr(info_->GetTypeAttr(&attributes_), S_OK, "ITypeInfo::GetTypeAttr");
  }
  ~TypeAttributes() { info_->ReleaseTypeAttr(attributes_); }
  TypeAttributes(const TypeAttributes&) = delete;
  TypeAttributes& operator=(const TypeAttributes&) = delete;
  const TYPEATTR* operator->() const { return attributes_; }

 private:
  ITypeInfo* info_;
  TYPEATTR* attributes_ = nullptr;
};

std::wstring memberName(ITypeInfo* info, MEMBERID id) {
  BSTR name = nullptr;
  expectHr(info->GetDocumentation(id, &name, nullptr, nullptr, nullptr), S_OK, "ITypeInfo::GetDocumentation");
  std::wstring text(name, SysStringLen(name));
  SysFreeString(name);
  return text;
}

/// The type information of the events interface, reached as a client does: class info, then the
/// coclass's default source interface.
ComPtr<ITypeInfo> eventTypeInfo(IUnknown* instrument) {
  auto classInfo = queryInterface<IProvideClassInfo>(instrument, IID_IProvideClassInfo, "IProvideClassInfo");
  ComPtr<ITypeInfo> coclass;
  expectHr(classInfo->GetClassInfo(coclass.put()), S_OK, "IProvideClassInfo::GetClassInfo");
  const TypeAttributes attributes(coclass.get());
  for (UINT i = 0; i < attributes->cImplTypes; ++i) {
    INT flags = 0;
    expectHr(coclass->GetImplTypeFlags(i, &flags), S_OK, "ITypeInfo::GetImplTypeFlags");
    if ((flags & (IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE)) !=
        (IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE)) {
      continue;
    }
    HREFTYPE reference = 0;
    expectHr(coclass->GetRefTypeOfImplType(i, &reference), S_OK, "ITypeInfo::GetRefTypeOfImplType");
    ComPtr<ITypeInfo> events;
    expectHr(coclass->GetRefTypeInfo(reference, events.put()), S_OK, "ITypeInfo::GetRefTypeInfo");
    return events;
  }
  fail("the coclass has no default source interface");
}

ComPtr<IConnectionPoint> eventConnectionPoint(IUnknown* instrument) {
  auto container = queryInterface<IConnectionPointContainer>(instrument, IID_IConnectionPointContainer,
                                                             "IConnectionPointContainer");
  ComPtr<IConnectionPoint> point;
  expectHr(container->FindConnectionPoint(DIID___CRX9400VTI, point.put()), S_OK,
           "FindConnectionPoint(__CRX9400VTI)");
  return point;
}

std::wstring folderOf(HMODULE module) {
  wchar_t path[MAX_PATH * 2] = {};
  const DWORD length = GetModuleFileNameW(module, path, MAX_PATH * 2);
  std::wstring folder(path, length);
  const auto slash = folder.find_last_of(L"\\/");
  return slash == std::wstring::npos ? std::wstring() : folder.substr(0, slash);
}

// --- the checks ----------------------------------------------------------------------------------

void checkCreate(const HostOptions&) {
  for (const ClassEntry& entry : kClasses) {
    const std::string name = narrow(entry.progId);
    CLSID classId{};
    expectHr(CLSIDFromProgID(entry.progId, &classId), S_OK, "CLSIDFromProgID(" + name + ")");
    expect(IsEqualCLSID(classId, *entry.classId),
           name + " names " + guidText(classId) + ", the type library says " + guidText(*entry.classId));
    LPOLESTR progId = nullptr;
    expectHr(ProgIDFromCLSID(*entry.classId, &progId), S_OK, "ProgIDFromCLSID(" + name + ")");
    const bool sameProgId = std::wcscmp(progId, entry.progId) == 0;
    CoTaskMemFree(progId);
    expect(sameProgId, "ProgIDFromCLSID does not give back " + name);
    auto object = createByProgId<IDispatch>(entry.progId, IID_IDispatch);
    queryInterface<IUnknown>(object.get(), *entry.defaultInterface, name + " default interface");
  }
}

void checkClassInfo(const HostOptions&) {
  for (const ClassEntry& entry : kClasses) {
    const std::string name = narrow(entry.progId);
    auto object = createByProgId<IUnknown>(entry.progId, IID_IUnknown);
    auto info =
        queryInterface<IProvideClassInfo2>(object.get(), IID_IProvideClassInfo2, "IProvideClassInfo2");
    GUID source = kForeignIid;
    const HRESULT hr = info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &source);
    if (entry.raisesEvents) {
      expectHr(hr, S_OK, name + " GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID)");
      expect(IsEqualGUID(source, DIID___CRX9400VTI), name + " names the event source " + guidText(source));
    } else {
      expectHr(hr, E_INVALIDARG, name + " (no events) GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID)");
      expect(IsEqualGUID(source, GUID_NULL), name + " GetGUID left " + guidText(source) + " in its result");
    }
    expectHr(info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID + 1, &source), E_INVALIDARG,
             name + " GetGUID(unknown kind)");
    ComPtr<ITypeInfo> coclass;
    expectHr(info->GetClassInfo(coclass.put()), S_OK, name + " GetClassInfo");
    const TypeAttributes attributes(coclass.get());
    expect(attributes->typekind == TKIND_COCLASS, name + " GetClassInfo gave no coclass");
    expect(IsEqualGUID(attributes->guid, *entry.classId),
           name + " GetClassInfo describes " + guidText(attributes->guid));
  }
}

void checkConnectionPoints(const HostOptions&) {
  auto instrument = createByProgId<IUnknown>(kInstrumentProgId, IID_IUnknown);
  auto container = queryInterface<IConnectionPointContainer>(instrument.get(), IID_IConnectionPointContainer,
                                                             "IConnectionPointContainer");
  auto point = eventConnectionPoint(instrument.get());
  IID iid{};
  expectHr(point->GetConnectionInterface(&iid), S_OK, "GetConnectionInterface");
  expect(IsEqualIID(iid, DIID___CRX9400VTI), "the connection point is for " + guidText(iid));
  ComPtr<IConnectionPointContainer> owner;
  expectHr(point->GetConnectionPointContainer(owner.put()), S_OK, "GetConnectionPointContainer");
  auto ownerIdentity = queryInterface<IUnknown>(owner.get(), IID_IUnknown, "IUnknown of the container");
  expect(ownerIdentity.get() == instrument.get(), "the connection point's container is another object");

  for (const IID* other : {&IID_IDispatch, &IID__CRX9400VTI, &kForeignIid}) {
    IConnectionPoint* none = reinterpret_cast<IConnectionPoint*>(1);
    expectHr(container->FindConnectionPoint(*other, &none), CONNECT_E_NOCONNECTION,
             "FindConnectionPoint(" + guidText(*other) + ")");
    expect(none == nullptr, "FindConnectionPoint left a pointer after failing");
  }

  ComPtr<IEnumConnectionPoints> points;
  expectHr(container->EnumConnectionPoints(points.put()), S_OK, "EnumConnectionPoints");
  ComPtr<IConnectionPoint> first;
  ULONG fetched = 0;
  expectHr(points->Next(1, first.put(), &fetched), S_OK, "IEnumConnectionPoints::Next");
  expect(fetched == 1 && first.get() == point.get(), "the enumeration does not list the events' point");
  ComPtr<IConnectionPoint> second;
  expectHr(points->Next(1, second.put(), &fetched), S_FALSE, "IEnumConnectionPoints::Next past the end");
  expect(fetched == 0, "the enumeration lists more than one connection point");

  ComPtr<IUnknown> query = createByProgId<IUnknown>(kQueryProgId, IID_IUnknown);
  ComPtr<IConnectionPointContainer> noContainer;
  expectHr(query->QueryInterface(IID_IConnectionPointContainer, noContainer.putVoid()), E_NOINTERFACE,
           "CRX9400Query QueryInterface(IConnectionPointContainer)");
}

void checkAdvise(const HostOptions&) {
  auto instrument = createByProgId<IUnknown>(kInstrumentProgId, IID_IUnknown);
  auto point = eventConnectionPoint(instrument.get());
  auto* first = new RecordingSink();
  auto* second = new RecordingSink();
  DWORD firstCookie = 0;
  DWORD secondCookie = 0;
  expectHr(point->Advise(first, &firstCookie), S_OK, "Advise(first sink)");
  expectHr(point->Advise(second, &secondCookie), S_OK, "Advise(second sink)");
  expect(firstCookie != 0 && secondCookie != 0 && firstCookie != secondCookie,
         "the two sinks got cookies " + std::to_string(firstCookie) + " and " + std::to_string(secondCookie));
  expect(first->references() == 2 && second->references() == 2, "an advised sink is not held exactly once");

  const DWORD wrongCookie = firstCookie + secondCookie + 100;
  expectHr(point->Unadvise(wrongCookie), CONNECT_E_NOCONNECTION, "Unadvise(wrong cookie)");
  expectHr(point->Unadvise(firstCookie), S_OK, "Unadvise(first cookie)");
  expectHr(point->Unadvise(firstCookie), CONNECT_E_NOCONNECTION, "Unadvise(first cookie) again");
  expect(first->references() == 1, "Unadvise did not release the sink");
  expectHr(point->Unadvise(secondCookie), S_OK, "Unadvise(second cookie)");
  expect(second->references() == 1, "Unadvise did not release the second sink");

  DWORD cookie = 1;
  expectHr(point->Advise(nullptr, &cookie), E_POINTER, "Advise(null sink)");
  expect(cookie == 0, "a failed Advise left a cookie");
  // An object without IDispatch cannot receive the events.
  ComPtr<IEnumConnectionPoints> notASink;
  auto container = queryInterface<IConnectionPointContainer>(instrument.get(), IID_IConnectionPointContainer,
                                                             "IConnectionPointContainer");
  expectHr(container->EnumConnectionPoints(notASink.put()), S_OK, "EnumConnectionPoints");
  expectHr(point->Advise(notASink.get(), &cookie), CONNECT_E_CANNOTCONNECT,
           "Advise(object without IDispatch)");

  // A sink still advised when the executive lets the instrument go is released with it.
  expectHr(point->Advise(first, &cookie), S_OK, "Advise(first sink) again");
  container.reset();
  notASink.reset();
  point.reset();
  instrument.reset();
  const ULONG left = first->references();
  first->Release();
  second->Release();
  expect(left == 1, "releasing the instrument did not release its advised sink");
}

void checkQueryInterface(const HostOptions&) {
  for (const ClassEntry& entry : kClasses) {
    const std::string name = narrow(entry.progId);
    auto object = createByProgId<IUnknown>(entry.progId, IID_IUnknown);
    const IID* answered[] = {&IID_IUnknown,          &IID_IDispatch,         entry.defaultInterface,
                             &IID_ISupportErrorInfo, &IID_IProvideClassInfo, &IID_IProvideClassInfo2};
    for (const IID* iid : answered) {
      auto face = queryInterface<IUnknown>(object.get(), *iid, name + " " + guidText(*iid));
      auto identity = queryInterface<IUnknown>(face.get(), IID_IUnknown, name + " IUnknown");
      expect(identity.get() == object.get(),
             name + ": IUnknown through " + guidText(*iid) + " is another object");
    }
    std::vector<const IID*> refused = {&kForeignIid, &IID_IPersist, &IID_IClassFactory,
                                       &IID_IConnectionPoint};
    if (!entry.raisesEvents) refused.push_back(&IID_IConnectionPointContainer);
    for (const ClassEntry& other : kClasses) {
      if (&other != &entry) refused.push_back(other.defaultInterface);
    }
    for (const IID* iid : refused) {
      void* out = reinterpret_cast<void*>(1);
      expectHr(object->QueryInterface(*iid, &out), E_NOINTERFACE,
               name + " QueryInterface(" + guidText(*iid) + ")");
      expect(out == nullptr,
             name + " QueryInterface(" + guidText(*iid) + ") failed without clearing the pointer");
    }
    expectHr(object->QueryInterface(IID_IDispatch, nullptr), E_POINTER, name + " QueryInterface(null out)");
    if (entry.raisesEvents) {
      queryInterface<IUnknown>(object.get(), IID_IConnectionPointContainer,
                               name + " IConnectionPointContainer");
    }
  }
}

void checkDispatchNames(const HostOptions&) {
  const std::pair<const wchar_t*, const wchar_t*> interfaces[] = {{kQueryProgId, kQueryMembers},
                                                                  {kInstrumentProgId, kInstrumentMembers}};
  for (const auto& [progId, memberList] : interfaces) {
    const std::vector<std::wstring> members = words(memberList);
    expect(members.size() == (progId == kQueryProgId ? 6u : 55u), "the member list is incomplete");
    auto object = createByProgId<IDispatch>(progId, IID_IDispatch);
    UINT count = 0;
    expectHr(object->GetTypeInfoCount(&count), S_OK, "GetTypeInfoCount");
    expect(count == 1, "GetTypeInfoCount answered " + std::to_string(count));
    for (std::size_t i = 0; i < members.size(); ++i) {
      LPOLESTR name = const_cast<LPOLESTR>(members[i].c_str());
      DISPID id = DISPID_UNKNOWN;
      expectHr(object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id), S_OK,
               "GetIDsOfNames(" + narrow(name) + ")");
      expect(id == static_cast<DISPID>(i + 1),
             narrow(name) + " has DISPID " + std::to_string(id) + ", expected " + std::to_string(i + 1));
    }
  }
  auto instrument = createByProgId<IDispatch>(kInstrumentProgId, IID_IDispatch);
  // Corrected spellings are not the contract's names.
  for (const wchar_t* wrong :
       {L"ConfigureDoseDetector", L"pGetExposureKVPeak", L"ValOS", L"pFirmwareVersions"}) {
    LPOLESTR name = const_cast<LPOLESTR>(wrong);
    DISPID id = 0;
    expectHr(instrument->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id), DISP_E_UNKNOWNNAME,
             "GetIDsOfNames(" + narrow(wrong) + ")");
  }
  // Named arguments bind to the parameter names, misspellings included.
  LPOLESTR names[] = {const_cast<LPOLESTR>(L"SendCompareData"), const_cast<LPOLESTR>(L"lRefTeperature"),
                      const_cast<LPOLESTR>(L"rOffTemp")};
  DISPID ids[3] = {};
  expectHr(instrument->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids), S_OK,
           "GetIDsOfNames(SendCompareData, lRefTeperature, rOffTemp)");
  expect(ids[0] == 47 && ids[1] == 5 && ids[2] == 14, "SendCompareData's parameters have other positions");
}

void checkEventTypeInfo(const HostOptions&) {
  auto instrument = createByProgId<IUnknown>(kInstrumentProgId, IID_IUnknown);
  auto events = eventTypeInfo(instrument.get());
  const TypeAttributes attributes(events.get());
  expect(attributes->typekind == TKIND_DISPATCH, "the event interface is no dispinterface");
  expect(IsEqualGUID(attributes->guid, DIID___CRX9400VTI),
         "the event interface is " + guidText(attributes->guid));
  expect(attributes->cFuncs == std::size(kEvents),
         "the event interface has " + std::to_string(attributes->cFuncs) + " members, expected " +
             std::to_string(std::size(kEvents)));
  for (UINT i = 0; i < attributes->cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    expectHr(events->GetFuncDesc(i, &function), S_OK, "ITypeInfo::GetFuncDesc");
    const EventEntry& expected = kEvents[i];
    const MEMBERID id = function->memid;
    const UINT parameters = static_cast<UINT>(function->cParams);
    bool byReference = parameters > 0;
    bool byValue = true;
    for (UINT p = 0; p < parameters; ++p) {
      const TYPEDESC& type = function->lprgelemdescParam[p].tdesc;
      const bool stringReference =
          type.vt == VT_PTR && type.lptdesc != nullptr && type.lptdesc->vt == VT_BSTR;
      byReference = byReference && stringReference;
      byValue = byValue && type.vt != VT_PTR;
    }
    events->ReleaseFuncDesc(function);
    const std::string name = narrow(expected.name);
    expect(id == static_cast<MEMBERID>(i + 1),
           "event " + std::to_string(i + 1) + " has DISPID " + std::to_string(id));
    expect(
        memberName(events.get(), id) == expected.name,
        "event " + std::to_string(id) + " is " + narrow(memberName(events.get(), id)) + ", expected " + name);
    expect(parameters == expected.parameters, name + " has " + std::to_string(parameters) + " parameters");
    expect(expected.stringsByReference ? byReference : byValue,
           name + (expected.stringsByReference ? " does not take its Strings by reference"
                                               : " takes a parameter by reference"));
  }
}

void checkUnload(const HostOptions&) {
  using CanUnload = HRESULT(STDAPICALLTYPE*)();
  CanUnload canUnload = nullptr;
  {
    auto instrument = createByProgId<IUnknown>(kInstrumentProgId, IID_IUnknown);
    HMODULE plugin = GetModuleHandleW(kPluginFile);
    expect(plugin != nullptr, "the plug-in is not loaded while its object lives");
    canUnload = exportOf<CanUnload>(plugin, "DllCanUnloadNow");
    expectHr(canUnload(), S_FALSE, "DllCanUnloadNow with an instrument alive");
  }
  expectHr(canUnload(), S_OK, "DllCanUnloadNow after every object was released");
  {
    ComPtr<IClassFactory> factory;
    expectHr(CoGetClassObject(CLSID_CRX9400Query, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                              factory.putVoid()),
             S_OK, "CoGetClassObject(CRX9400Query)");
    expectHr(factory->LockServer(TRUE), S_OK, "IClassFactory::LockServer(TRUE)");
  }
  expectHr(canUnload(), S_FALSE, "DllCanUnloadNow with the server locked");
  {
    ComPtr<IClassFactory> factory;
    expectHr(CoGetClassObject(CLSID_CRX9400Query, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                              factory.putVoid()),
             S_OK, "CoGetClassObject(CRX9400Query)");
    expectHr(factory->LockServer(FALSE), S_OK, "IClassFactory::LockServer(FALSE)");
  }
  expectHr(canUnload(), S_OK, "DllCanUnloadNow after the lock was taken back");

  CoFreeUnusedLibrariesEx(0, 0);
  expect(GetModuleHandleW(kPluginFile) == nullptr, "CoFreeUnusedLibrariesEx left the plug-in loaded");
  // Loaded afresh, the plug-in serves again.
  auto again = createByProgId<IDispatch>(kInstrumentProgId, IID_IDispatch);
  expect(GetModuleHandleW(kPluginFile) != nullptr, "the plug-in was not loaded again");
}

void checkDeviceLibrary(const HostOptions&) {
  auto query = createByProgId<_CRX9400Query>(kQueryProgId, IID__CRX9400Query);
  expectHr(query->RegisterApp(), S_OK, "RegisterApp");
  HMODULE simulator = GetModuleHandleW(kDeviceLibraryFile);
  expect(simulator != nullptr, "RegisterApp did not load TamsaMBDll.dll");
  expect(folderOf(simulator) == folderOf(GetModuleHandleW(kPluginFile)),
         "the device library came from " + narrow(folderOf(simulator)) + ", not from beside the plug-in");
  expect(simulatorState(simulator).registered == 1, "the device library saw no MBRegisterApplication");
  expect(simulatorLog(simulator).find("MBRegisterApplication(1)\n") != std::string::npos,
         "the call log has no MBRegisterApplication(1)");

  expectHr(query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  VARIANT_BOOL connected = VARIANT_TRUE;
  expectHr(query->IsDetectorConnected(&connected), S_OK, "IsDetectorConnected");
  expect(connected == VARIANT_FALSE, "a detector is connected after ResetTheDetectors");
  expect(simulatorLog(simulator).find("MBStopScanningAndReset()\n") != std::string::npos,
         "ResetTheDetectors did not stop the scan in the device library");

  // The instrument shares the query's session.
  auto instrument = createByProgId<_CRX9400VTI>(kInstrumentProgId, IID__CRX9400VTI);
  expectHr(instrument->IsDetectorConnected(&connected), S_OK, "CRX9400VTI IsDetectorConnected");
  expect(connected == VARIANT_FALSE, "the instrument sees a detector after ResetTheDetectors");

  expectHr(query->CloseApp(), S_OK, "CloseApp");
  expect(simulatorState(simulator).registered == 0, "CloseApp did not end the device library's session");
}

void checkNoDeviceLibrary(const HostOptions&) {
  auto query = createByProgId<_CRX9400Query>(kQueryProgId, IID__CRX9400Query);
  auto instrument = createByProgId<_CRX9400VTI>(kInstrumentProgId, IID__CRX9400VTI);
  VARIANT_BOOL flag = VARIANT_TRUE;
  BSTR text = nullptr;
  expectHr(query->RegisterApp(), S_OK, "RegisterApp");
  expectHr(query->IsDetectorConnected(&flag), S_OK, "IsDetectorConnected");
  expect(flag == VARIANT_FALSE, "IsDetectorConnected is True without a device library");
  expectHr(query->SendDetectorType(0), S_OK, "SendDetectorType(0)");
  expectHr(query->ResetTheDetectors(), S_OK, "ResetTheDetectors");
  expectHr(instrument->ChangeSettings(), S_OK, "ChangeSettings");
  expectHr(instrument->CheckDataStatus(&flag), S_OK, "CheckDataStatus");
  expectHr(instrument->CheckConnectionStatus(&flag), S_OK, "CheckConnectionStatus");
  expectHr(instrument->get_pSerialNumber(&text), S_OK, "pSerialNumber");
  SysFreeString(text);
  expectHr(instrument->GetWaveformInMilliSec(0.0f, 1.0f, 10, &text), S_OK, "GetWaveformInMilliSec");
  SysFreeString(text);
  expectHr(query->CloseApp(), S_OK, "CloseApp");
  expect(GetModuleHandleW(kDeviceLibraryFile) == nullptr,
         "TamsaMBDll.dll was found (" + narrow(folderOf(GetModuleHandleW(kDeviceLibraryFile))) +
             "): this check needs a plug-in registered from a folder without it");
}

void checkRecordingSink(const HostOptions&) {
  // The sink records what a DataReady call carries and hands a replaced text back through the
  // reference, as the executive's handler would.
  auto* sink = new RecordingSink();
  sink->replaceText(5, 9, L"0.42");
  BSTR texts[10];
  VARIANT arguments[10];
  for (int i = 0; i < 10; ++i) {
    texts[i] = SysAllocString(std::to_wstring(i).c_str());
    VariantInit(&arguments[9 - i]);
    V_VT(&arguments[9 - i]) = VT_BYREF | VT_BSTR;
    V_BSTRREF(&arguments[9 - i]) = &texts[i];
  }
  DISPPARAMS parameters{arguments, nullptr, 10, 0};
  const HRESULT hr =
      sink->Invoke(5, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr);
  const std::wstring last(texts[9], SysStringLen(texts[9]));
  for (BSTR text : texts) SysFreeString(text);
  const auto events = sink->events();
  sink->Release();
  expectHr(hr, S_OK, "RecordingSink::Invoke");
  expect(events.size() == 1 && events[0].id == 5 && events[0].arguments.size() == 10,
         "the call was not recorded");
  expect(events[0].arguments[0].text == L"0" && events[0].arguments[9].text == L"9",
         "the arguments were recorded out of order");
  expect(events[0].arguments[3].type == (VT_BYREF | VT_BSTR), "the by-reference type was not recorded");
  expect(last == L"0.42", "the replaced text did not reach the caller");
}

}  // namespace

std::vector<Check> comChecks() {
  return {
      {"create", "each ProgID names its class and creates it in process", checkCreate},
      {"classinfo", "IProvideClassInfo2: event source of CRX9400VTI, coclass type info, none for the others",
       checkClassInfo},
      {"connection-points", "CRX9400VTI offers exactly one connection point, for __CRX9400VTI",
       checkConnectionPoints},
      {"advise", "Advise/Unadvise: cookies, two sinks, wrong cookies, sinks released", checkAdvise},
      {"query-interface", "interfaces answered, refused ones give E_NOINTERFACE with the pointer cleared",
       checkQueryInterface},
      {"dispatch-names", "GetIDsOfNames finds all 6 + 55 members by their exact names and DISPIDs",
       checkDispatchNames},
      {"event-typeinfo", "the events interface lists the 10 events with DISPIDs 1..10 in order",
       checkEventTypeInfo},
      {"recording-sink", "the test sink records by-reference Strings and writes replacements back",
       checkRecordingSink},
      {"unload", "DllCanUnloadNow follows objects and locks; the plug-in unloads and loads again",
       checkUnload},
      {"device-library", "the query class reaches the simulator beside the plug-in", checkDeviceLibrary},
  };
}

std::vector<Check> bareFolderChecks() {
  return {{"no-device-library", "without TamsaMBDll.dll members still answer S_OK (plug-in in a bare folder)",
           checkNoDeviceLibrary}};
}

}  // namespace rx9400::e2e
