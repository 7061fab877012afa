// The plug-in's COM contract as the executive meets it through the registry and the type library:
// each ProgID's class, its class information and default event source, every member's name and DISPID,
// the events interface's DISPIDs.
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

namespace rx9400::e2e {
namespace {

struct ClassEntry {
  const wchar_t* progId;
  const CLSID* classId;
  bool raisesEvents;
  /// The members of the default interface in order (DISPIDs count from 1).
  const wchar_t* members;
};

const ClassEntry kClasses[] = {
    {kQueryProgId, &CLSID_CRX9400Query, false,
     L"RegisterApp CloseApp ScanAndConnectToDetector IsDetectorConnected SendDetectorType ResetTheDetectors"},
    {kInstrumentProgId, &CLSID_CRX9400VTI, true,
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
    {L"TamsaRX9400VTI.CStoreDetectorType", &CLSID_CStoreDetectorType, false, L""},
};

/// The events in DISPID order 1..10; DataReady alone takes its Strings by reference.
const wchar_t* const kEvents[] = {L"IncrementWaveCount", L"ZeroingmAs",
                                  L"AddWakeUpButton",    L"EnableStopButton",
                                  L"DataReady",          L"CheckExposureWaveform",
                                  L"DisplayErrorMsg",    L"DisplaySensorResetMsg",
                                  L"TestSWDataReady",    L"TestmAsDataReady"};

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

/// The events interface as a client reaches it: its names and DISPIDs, DataReady's Strings by reference.
void expectEvents(ITypeInfo* events) {
  const TYPEATTR attributes = typeAttributes(events);
  expect(attributes.typekind == TKIND_DISPATCH && attributes.cFuncs == std::size(kEvents),
         "the default source is not the 10 events' dispinterface");
  for (UINT i = 0; i < attributes.cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    expectHr(events->GetFuncDesc(i, &function), S_OK, "GetFuncDesc");
    const MEMBERID id = function->memid;
    const bool byReference = function->cParams > 0 && function->lprgelemdescParam[0].tdesc.vt == VT_PTR;
    events->ReleaseFuncDesc(function);
    BSTR name = nullptr;
    expectHr(events->GetDocumentation(id, &name, nullptr, nullptr, nullptr), S_OK, "GetDocumentation");
    const std::wstring actual = taken(name);
    expect(id == static_cast<MEMBERID>(i + 1) && actual == kEvents[i],
           "event " + std::to_string(i + 1) + " is " + narrow(actual) + " with DISPID " + std::to_string(id));
    expect(byReference == (actual == L"DataReady"), narrow(actual) + " takes its arguments otherwise");
  }
}

void checkTypeLibrary(const Options&) {
  for (const ClassEntry& entry : kClasses) {
    const std::string name = narrow(entry.progId);
    CLSID classId{};
    expectHr(CLSIDFromProgID(entry.progId, &classId), S_OK, "CLSIDFromProgID(" + name + ")");
    expect(IsEqualCLSID(classId, *entry.classId), name + " names " + guidText(classId));
    auto info = createByProgId<IProvideClassInfo2>(entry.progId, IID_IProvideClassInfo2);
    GUID source{};
    expectHr(info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &source),
             entry.raisesEvents ? S_OK : E_INVALIDARG, name + " GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID)");
    ComPtr<ITypeInfo> coclass;
    expectHr(info->GetClassInfo(coclass.put()), S_OK, name + " GetClassInfo");
    expect(IsEqualGUID(typeAttributes(coclass.get()).guid, *entry.classId),
           name + " GetClassInfo is another class");
    if (entry.raisesEvents) {
      expect(IsEqualGUID(source, DIID___CRX9400VTI), name + "'s default source is " + guidText(source));
      ComPtr<ITypeInfo> events;
      for (UINT i = 0; !events && i < typeAttributes(coclass.get()).cImplTypes; ++i) {
        INT flags = 0;
        HREFTYPE reference = 0;
        coclass->GetImplTypeFlags(i, &flags);
        if ((flags & IMPLTYPEFLAG_FSOURCE) != 0 && SUCCEEDED(coclass->GetRefTypeOfImplType(i, &reference)))
          coclass->GetRefTypeInfo(reference, events.put());
      }
      expect(static_cast<bool>(events), "the coclass names no event source");
      expectEvents(events.get());
    }
    const std::vector<std::wstring> members = words(entry.members);
    auto object = queryInterface<IDispatch>(info.get(), IID_IDispatch, name + " IDispatch");
    for (std::size_t i = 0; i < members.size(); ++i) {
      LPOLESTR member = const_cast<LPOLESTR>(members[i].c_str());
      DISPID id = DISPID_UNKNOWN;
      expectHr(object->GetIDsOfNames(IID_NULL, &member, 1, LOCALE_USER_DEFAULT, &id), S_OK,
               "GetIDsOfNames(" + narrow(member) + ")");
      expect(id == static_cast<DISPID>(i + 1), narrow(member) + " has DISPID " + std::to_string(id));
    }
  }
  expect(words(kClasses[0].members).size() == 6 && words(kClasses[1].members).size() == 55,
         "the member lists are incomplete");
}

}  // namespace

std::vector<Check> comChecks() {
  return {
      {"classes", "each ProgID's class, its event source and events, every member's name and DISPID",
       checkTypeLibrary},
  };
}

}  // namespace rx9400::e2e
