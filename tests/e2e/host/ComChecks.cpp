// The plug-in's COM contract as the executive meets it: the classes, their identity and class
// information, the events' connection point and type information, names and DISPIDs, unloading and
// loading again, and a plug-in without its device library.
#include <windows.h>

#include <objbase.h>
#include <ocidl.h>
#include <oleauto.h>
#include <olectl.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "HostChecks.h"
#include "RecordingSink.h"

namespace rx9400::e2e {
namespace {

constexpr wchar_t kPluginFile[] = L"TamsaRX9400VTI.dll";
// An interface no class of the plug-in has.
const IID kForeignIid = {0x6d1f0a3e, 0x1b7c, 0x4f5e, {0x9a, 0x11, 0x52, 0x3c, 0x7e, 0x90, 0x2d, 0x41}};

struct ClassEntry {
  const wchar_t* progId;
  const CLSID* classId;
  const IID* defaultInterface;
  bool raisesEvents;
  /// The members of the default interface in order (DISPIDs count from 1); empty: not checked.
  const wchar_t* members;
};

const ClassEntry kClasses[] = {
    {kQueryProgId, &CLSID_CRX9400Query, &IID__CRX9400Query, false,
     L"RegisterApp CloseApp ScanAndConnectToDetector IsDetectorConnected SendDetectorType ResetTheDetectors"},
    {kInstrumentProgId, &CLSID_CRX9400VTI, &IID__CRX9400VTI, true,
     L"pChargingStatus pPercentageCharge pResolution pCurrentMode pCurrentSettings pGetExposureTime "
     L"pGetExposurekVp InitTimer CheckDetectorPowerStatus GetWaveformInSecs CheckDataStatus DetectorWakeUp "
     L"EnableMeasurements GetNumberOfTargetFilters GetValidTargetFilters GetDefaultTargetFilterName "
     L"UpdateDefaultTargetFilterInSettings ChangeAllsettings ChangeDetectorSetup ChangeDetectorMode "
     L"ChangeSettings pDoseUnits pDoseRateUnits pFluoroType pTimeUnit pPercentKV pDelay pIncludeDelay "
     L"pTargetFilter pSerialNumber pFirmWareVersion IsDetectorConnected GetWaveformInMilliSec "
     L"pMeasurementStatus CheckDetectorStatus Val_OS CheckConnectionStatus CloseWindow CheckSleepStatus "
     L"GetDetectorType GetIonChambers GetIonChamberInfo CongiureDoseDetector ShowDosimeterMode "
     L"DisplayIonChamber ShowDosimeterIonChamber SendCompareData SetMasInputtype GetIonChamberName "
     L"GetCalFactor GetCalConst mAsExposureFinish DetectorExposureFinish pDetectorName ResetTheFlags"},
    {L"TamsaRX9400VTI.CStoreDetectorType", &CLSID_CStoreDetectorType, &IID__CStoreDetectorType, false, L""},
};

/// The events in DISPID order 1..10 with their parameter counts; DataReady alone takes its Strings by
/// reference.
const std::pair<const wchar_t*, UINT> kEvents[] = {
    {L"IncrementWaveCount", 0}, {L"ZeroingmAs", 1},
    {L"AddWakeUpButton", 1},    {L"EnableStopButton", 1},
    {L"DataReady", 10},         {L"CheckExposureWaveform", 1},
    {L"DisplayErrorMsg", 3},    {L"DisplaySensorResetMsg", 1},
    {L"TestSWDataReady", 7},    {L"TestmAsDataReady", 4},
};

std::vector<std::wstring> words(const std::wstring& text) {
  std::wistringstream in(text);
  return {std::istream_iterator<std::wstring, wchar_t>(in), std::istream_iterator<std::wstring, wchar_t>()};
}

/// A copy of a type's TYPEATTR (its pointers are not followed).
TYPEATTR typeAttributes(ITypeInfo* info) {
  TYPEATTR* attributes = nullptr;
  expectHr(info->GetTypeAttr(&attributes), S_OK, "ITypeInfo::GetTypeAttr");
  const TYPEATTR copy = *attributes;
  info->ReleaseTypeAttr(attributes);
  return copy;
}

std::wstring folderOf(HMODULE module) {
  wchar_t path[MAX_PATH * 2] = {};
  std::wstring folder(path, GetModuleFileNameW(module, path, MAX_PATH * 2));
  return folder.substr(0, folder.find_last_of(L"\\/") + 1);
}

void checkClasses(const Options&) {
  for (const ClassEntry& entry : kClasses) {
    const std::string name = narrow(entry.progId);
    CLSID classId{};
    expectHr(CLSIDFromProgID(entry.progId, &classId), S_OK, "CLSIDFromProgID(" + name + ")");
    expect(IsEqualCLSID(classId, *entry.classId), name + " names " + guidText(classId));
    auto object = createByProgId<IUnknown>(entry.progId, IID_IUnknown);

    // One identity through every interface answered; refused ones clear the pointer.
    std::vector<const IID*> answered = {&IID_IDispatch, entry.defaultInterface, &IID_ISupportErrorInfo,
                                        &IID_IProvideClassInfo, &IID_IProvideClassInfo2};
    std::vector<const IID*> refused = {&kForeignIid, &IID_IPersist, &IID_IClassFactory,
                                       &IID_IConnectionPoint};
    (entry.raisesEvents ? answered : refused).push_back(&IID_IConnectionPointContainer);
    for (const ClassEntry& other : kClasses) {
      if (&other != &entry) refused.push_back(other.defaultInterface);
    }
    for (const IID* iid : answered) {
      auto face = queryInterface<IUnknown>(object.get(), *iid, name + " " + guidText(*iid));
      auto identity = queryInterface<IUnknown>(face.get(), IID_IUnknown, name + " IUnknown");
      expect(identity.get() == object.get(),
             name + ": IUnknown through " + guidText(*iid) + " is another object");
    }
    for (const IID* iid : refused) {
      void* out = reinterpret_cast<void*>(1);
      expectHr(object->QueryInterface(*iid, &out), E_NOINTERFACE,
               name + " QueryInterface(" + guidText(*iid) + ")");
      expect(out == nullptr,
             name + " QueryInterface(" + guidText(*iid) + ") failed without clearing the pointer");
    }
    expectHr(object->QueryInterface(IID_IDispatch, nullptr), E_POINTER, name + " QueryInterface(null out)");

    // IProvideClassInfo2: the instrument's default source is the events interface, the others have none.
    auto info =
        queryInterface<IProvideClassInfo2>(object.get(), IID_IProvideClassInfo2, "IProvideClassInfo2");
    GUID source = kForeignIid;
    const HRESULT hr = info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &source);
    expectHr(hr, entry.raisesEvents ? S_OK : E_INVALIDARG,
             name + " GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID)");
    expect(IsEqualGUID(source, entry.raisesEvents ? DIID___CRX9400VTI : GUID_NULL),
           name + " GetGUID gave " + guidText(source));
    expectHr(info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID + 1, &source), E_INVALIDARG,
             name + " GetGUID(unknown kind)");
    ComPtr<ITypeInfo> coclass;
    expectHr(info->GetClassInfo(coclass.put()), S_OK, name + " GetClassInfo");
    const TYPEATTR attributes = typeAttributes(coclass.get());
    expect(attributes.typekind == TKIND_COCLASS && IsEqualGUID(attributes.guid, *entry.classId),
           name + " GetClassInfo describes " + guidText(attributes.guid));
  }
}

void checkConnectionPoints(const Options&) {
  auto instrument = createByProgId<IUnknown>(kInstrumentProgId, IID_IUnknown);
  auto container = queryInterface<IConnectionPointContainer>(instrument.get(), IID_IConnectionPointContainer,
                                                             "IConnectionPointContainer");
  ComPtr<IConnectionPoint> point;
  expectHr(container->FindConnectionPoint(DIID___CRX9400VTI, point.put()), S_OK, "FindConnectionPoint");
  IID iid{};
  expectHr(point->GetConnectionInterface(&iid), S_OK, "GetConnectionInterface");
  expect(IsEqualIID(iid, DIID___CRX9400VTI), "the connection point is for " + guidText(iid));
  ComPtr<IConnectionPointContainer> owner;
  expectHr(point->GetConnectionPointContainer(owner.put()), S_OK, "GetConnectionPointContainer");
  expect(queryInterface<IUnknown>(owner.get(), IID_IUnknown, "IUnknown").get() == instrument.get(),
         "the connection point's container is another object");
  for (const IID* other : {&IID_IDispatch, &IID__CRX9400VTI, &kForeignIid}) {
    IConnectionPoint* none = reinterpret_cast<IConnectionPoint*>(1);
    expectHr(container->FindConnectionPoint(*other, &none), CONNECT_E_NOCONNECTION,
             "FindConnectionPoint(" + guidText(*other) + ")");
    expect(none == nullptr, "FindConnectionPoint left a pointer after failing");
  }
  ComPtr<IEnumConnectionPoints> points;
  expectHr(container->EnumConnectionPoints(points.put()), S_OK, "EnumConnectionPoints");
  ComPtr<IConnectionPoint> listed[2];
  ULONG fetched = 0;
  expectHr(points->Next(1, listed[0].put(), &fetched), S_OK, "IEnumConnectionPoints::Next");
  expect(fetched == 1 && listed[0].get() == point.get(), "the enumeration does not list the events' point");
  expectHr(points->Next(1, listed[1].put(), &fetched), S_FALSE, "IEnumConnectionPoints::Next past the end");

  // Advise and Unadvise: cookies of two sinks at once, each sink held once and released again.
  ComPtr<RecordingSink> sinks[2];
  DWORD cookies[2] = {};
  for (int i = 0; i < 2; ++i) {
    *sinks[i].put() = new RecordingSink();
    expectHr(point->Advise(sinks[i].get(), &cookies[i]), S_OK, "Advise");
    expect(cookies[i] != 0 && sinks[i]->references() == 2, "an advised sink is not held exactly once");
  }
  expect(cookies[0] != cookies[1], "two sinks got the same cookie");
  expectHr(point->Unadvise(cookies[0] + cookies[1] + 100), CONNECT_E_NOCONNECTION, "Unadvise(wrong cookie)");
  for (int i = 0; i < 2; ++i) {
    expectHr(point->Unadvise(cookies[i]), S_OK, "Unadvise");
    expectHr(point->Unadvise(cookies[i]), CONNECT_E_NOCONNECTION, "Unadvise of the same cookie again");
    expect(sinks[i]->references() == 1, "Unadvise did not release the sink");
  }
  DWORD cookie = 1;
  expectHr(point->Advise(nullptr, &cookie), E_POINTER, "Advise(null sink)");
  expect(cookie == 0, "a failed Advise left a cookie");
  expectHr(point->Advise(points.get(), &cookie), CONNECT_E_CANNOTCONNECT, "Advise(object without IDispatch)");
  // A sink still advised when the executive lets the instrument go is released with it.
  expectHr(point->Advise(sinks[0].get(), &cookie), S_OK, "Advise again");
  for (auto* held : {&listed[0], &listed[1]}) held->reset();
  points.reset();
  point.reset();
  owner.reset();
  container.reset();
  instrument.reset();
  expect(sinks[0]->references() == 1, "releasing the instrument did not release its advised sink");
}

void checkEventTypeInfo(const Options&) {
  // Reached as a client does: the class information, then the coclass's default source interface.
  auto instrument = createByProgId<IProvideClassInfo>(kInstrumentProgId, IID_IProvideClassInfo);
  ComPtr<ITypeInfo> coclass;
  expectHr(instrument->GetClassInfo(coclass.put()), S_OK, "GetClassInfo");
  ComPtr<ITypeInfo> events;
  for (UINT i = 0; !events && i < typeAttributes(coclass.get()).cImplTypes; ++i) {
    INT flags = 0;
    HREFTYPE reference = 0;
    expectHr(coclass->GetImplTypeFlags(i, &flags), S_OK, "GetImplTypeFlags");
    if ((flags & (IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE)) !=
        (IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE))
      continue;
    expectHr(coclass->GetRefTypeOfImplType(i, &reference), S_OK, "GetRefTypeOfImplType");
    expectHr(coclass->GetRefTypeInfo(reference, events.put()), S_OK, "GetRefTypeInfo");
  }
  expect(static_cast<bool>(events), "the coclass has no default source interface");
  const TYPEATTR attributes = typeAttributes(events.get());
  expect(attributes.typekind == TKIND_DISPATCH && IsEqualGUID(attributes.guid, DIID___CRX9400VTI),
         "the default source is " + guidText(attributes.guid));
  expect(attributes.cFuncs == std::size(kEvents),
         "the events interface has " + std::to_string(attributes.cFuncs) + " members");
  for (UINT i = 0; i < attributes.cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    expectHr(events->GetFuncDesc(i, &function), S_OK, "GetFuncDesc");
    const MEMBERID id = function->memid;
    const UINT parameters = static_cast<UINT>(function->cParams);
    UINT stringReferences = 0, references = 0;
    for (UINT p = 0; p < parameters; ++p) {
      const TYPEDESC& type = function->lprgelemdescParam[p].tdesc;
      references += type.vt == VT_PTR ? 1 : 0;
      stringReferences += type.vt == VT_PTR && type.lptdesc->vt == VT_BSTR ? 1 : 0;
    }
    events->ReleaseFuncDesc(function);
    BSTR name = nullptr;
    expectHr(events->GetDocumentation(id, &name, nullptr, nullptr, nullptr), S_OK, "GetDocumentation");
    const std::wstring actual = taken(name);
    const auto& [wanted, count] = kEvents[i];
    expect(id == static_cast<MEMBERID>(i + 1) && actual == wanted,
           "event " + std::to_string(i + 1) + " is " + narrow(actual) + " with DISPID " + std::to_string(id));
    expect(parameters == count, narrow(actual) + " has " + std::to_string(parameters) + " parameters");
    const UINT byReference = std::wstring(wanted) == L"DataReady" ? count : 0;
    expect(references == byReference && stringReferences == byReference,
           narrow(actual) + " has " + std::to_string(references) + " parameters by reference");
  }
}

void checkDispatchNames(const Options&) {
  for (const ClassEntry& entry : kClasses) {
    const std::vector<std::wstring> members = words(entry.members);
    if (members.empty()) continue;
    auto object = createByProgId<IDispatch>(entry.progId, IID_IDispatch);
    UINT count = 0;
    expectHr(object->GetTypeInfoCount(&count), S_OK, "GetTypeInfoCount");
    expect(count == 1, "GetTypeInfoCount answered " + std::to_string(count));
    for (std::size_t i = 0; i < members.size(); ++i) {
      LPOLESTR name = const_cast<LPOLESTR>(members[i].c_str());
      DISPID id = DISPID_UNKNOWN;
      expectHr(object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id), S_OK,
               "GetIDsOfNames(" + narrow(name) + ")");
      expect(id == static_cast<DISPID>(i + 1), narrow(name) + " has DISPID " + std::to_string(id));
    }
  }
  expect(words(kClasses[0].members).size() == 6 && words(kClasses[1].members).size() == 55,
         "the member lists are incomplete");
  auto instrument = createByProgId<IDispatch>(kInstrumentProgId, IID_IDispatch);
  // Corrected spellings are not the executive's names; named arguments bind, misspellings included.
  for (const wchar_t* wrong :
       {L"ConfigureDoseDetector", L"pGetExposureKVPeak", L"ValOS", L"pFirmwareVersions"}) {
    LPOLESTR name = const_cast<LPOLESTR>(wrong);
    DISPID id = 0;
    expectHr(instrument->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id), DISP_E_UNKNOWNNAME,
             "GetIDsOfNames(" + narrow(wrong) + ")");
  }
  LPOLESTR names[] = {const_cast<LPOLESTR>(L"SendCompareData"), const_cast<LPOLESTR>(L"lRefTeperature"),
                      const_cast<LPOLESTR>(L"rOffTemp")};
  DISPID ids[3] = {};
  expectHr(instrument->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids), S_OK,
           "GetIDsOfNames(SendCompareData, lRefTeperature, rOffTemp)");
  expect(ids[0] == 47 && ids[1] == 5 && ids[2] == 14, "SendCompareData's parameters have other positions");
}

/// The plug-in's device library session, used as the executive does: RegisterApp loads the library
/// from beside the plug-in and registers with it, and members call into it.
void useDeviceLibrary(_CRX9400Query* query, _CRX9400VTI* instrument, const char* round) {
  const std::string when = std::string(" (") + round + ")";
  expectHr(query->RegisterApp(), S_OK, "RegisterApp" + when);
  HMODULE simulator = loadedSimulator();
  expect(folderOf(simulator) == folderOf(GetModuleHandleW(kPluginFile)),
         "the device library came from " + narrow(folderOf(simulator)) + when);
  expect(simulatorState(simulator).registered == 1, "the device library saw no MBRegisterApplication" + when);
  exportOf<decltype(&SimClearCallLog)>(simulator, "SimClearCallLog")();
  expectHr(query->ResetTheDetectors(), S_OK, "ResetTheDetectors" + when);
  expect(!calls(simulator, "MBStopScanningAndReset").empty(),
         "ResetTheDetectors did not reach the library" + when);
  VARIANT_BOOL connected = VARIANT_TRUE;
  expectHr(instrument->IsDetectorConnected(&connected), S_OK, "IsDetectorConnected" + when);
  expect(connected == VARIANT_FALSE, "a detector is connected after ResetTheDetectors" + when);
}

void checkUnload(const Options&) {
  using CanUnload = HRESULT(STDAPICALLTYPE*)();
  const auto canUnload = [] {
    HMODULE plugin = GetModuleHandleW(kPluginFile);
    expect(plugin != nullptr, "the plug-in is not loaded");
    return exportOf<CanUnload>(plugin, "DllCanUnloadNow")();
  };
  {
    auto query = createByProgId<_CRX9400Query>(kQueryProgId, IID__CRX9400Query);
    auto instrument = createByProgId<_CRX9400VTI>(kInstrumentProgId, IID__CRX9400VTI);
    useDeviceLibrary(query.get(), instrument.get(), "first load");
    expectHr(canUnload(), S_FALSE, "DllCanUnloadNow with objects alive");
  }
  expectHr(canUnload(), S_OK, "DllCanUnloadNow after every object was released");
  for (const BOOL lock : {TRUE, FALSE}) {
    ComPtr<IClassFactory> factory;
    expectHr(CoGetClassObject(CLSID_CRX9400Query, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                              factory.putVoid()),
             S_OK, "CoGetClassObject(CRX9400Query)");
    expectHr(factory->LockServer(lock), S_OK, "IClassFactory::LockServer");
    factory.reset();
    expectHr(canUnload(), lock ? S_FALSE : S_OK,
             lock ? "DllCanUnloadNow while locked" : "DllCanUnloadNow unlocked");
  }
  // The session was left open, the device library loaded: the plug-in must still unload cleanly.
  CoFreeUnusedLibrariesEx(0, 0);
  expect(GetModuleHandleW(kPluginFile) == nullptr, "CoFreeUnusedLibrariesEx left the plug-in loaded");

  auto query = createByProgId<_CRX9400Query>(kQueryProgId, IID__CRX9400Query);
  auto instrument = createByProgId<_CRX9400VTI>(kInstrumentProgId, IID__CRX9400VTI);
  useDeviceLibrary(query.get(), instrument.get(), "loaded again");
  expectHr(query->CloseApp(), S_OK, "CloseApp");
}

}  // namespace

std::vector<Check> comChecks() {
  return {
      {"classes", "ProgIDs and CLSIDs, one identity, interfaces answered and refused, IProvideClassInfo2",
       checkClasses},
      {"connection-points", "one connection point, for __CRX9400VTI; Advise and Unadvise rules",
       checkConnectionPoints},
      {"event-typeinfo", "the events interface: 10 events, DISPIDs 1..10, DataReady's Strings by reference",
       checkEventTypeInfo},
      {"dispatch-names", "GetIDsOfNames finds all 6 + 55 members by their exact names and DISPIDs",
       checkDispatchNames},
      {"unload", "used, released, unloaded by CoFreeUnusedLibrariesEx, loaded and used again", checkUnload},
  };
}

}  // namespace rx9400::e2e
