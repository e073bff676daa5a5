#!/usr/bin/env python3
"""Refuses a Windows program or DLL that needs anything a plain Windows 7 SP1 lacks.

Two lists decide. DLLS names what Windows itself has had since 7 SP1: a run-time DLL of the compiler or of a library is
thereby refused. NEWER names functions these DLLs gained later, which link here without a word and fail on loading.
Usage: check_imports.py FILE...
"""
import re
import subprocess
import sys

DLLS = set("""
advapi32 bcrypt comctl32 comdlg32 crypt32 dnsapi gdi32 gdiplus imm32 iphlpapi kernel32 mpr msimg32 msvcrt ncrypt
mswsock normaliz ntdll ole32 oleaut32 oledlg propsys psapi rpcrt4 secur32 setupapi shell32 shlwapi urlmon user32 userenv
usp10 uxtheme version winhttp wininet winmm winspool.drv wintrust wldap32 ws2_32
""".split())

# Windows 8 and later, by the DLL that an import names.
NEWER = {
    "kernel32": """
        AddDllDirectory RemoveDllDirectory SetDefaultDllDirectories LoadPackagedLibrary
        CopyFile2 CreateFile2 CreateFile3 CreateDirectory2A CreateDirectory2W DeleteFile2A DeleteFile2W
        GetTempPath2A GetTempPath2W CreateFileMappingFromApp MapViewOfFileFromApp OpenFileMappingFromApp
        DiscardVirtualMemory OfferVirtualMemory ReclaimVirtualMemory PrefetchVirtualMemory
        VirtualAlloc2 VirtualAllocFromApp MapViewOfFile3 GetCurrentThreadStackLimits
        GetProcessInformation SetProcessInformation GetThreadInformation SetThreadInformation
        GetProcessMitigationPolicy SetProcessMitigationPolicy IsProcessCritical SetProcessDefaultCpuSets
        GetSystemTimePreciseAsFileTime QueryInterruptTime QueryInterruptTimePrecise
        QueryUnbiasedInterruptTimePrecise QueryAuxiliaryCounterFrequency
        GetThreadDescription SetThreadDescription
        WaitOnAddress WakeByAddressAll WakeByAddressSingle EnterSynchronizationBarrier InitializeSynchronizationBarrier
        IsWow64Process2 IsWow64GuestMachineSupported GetMachineTypeAttributes GetFirmwareType
        GetPackageFamilyName GetPackageFullName GetCurrentPackageFullName GetCurrentPackageId
        FindPackagesByPackageFamily CompareObjectHandles GetOverlappedResultEx GetUserDefaultGeoName
        CreatePseudoConsole ResizePseudoConsole ClosePseudoConsole
        InterlockedPushListSListEx GetCurrentPackageInfo GetCurrentPackagePath SetProcessDefaultCpuSetMasks
        SetThreadSelectedCpuSets SetThreadSelectedCpuSetMasks GetSystemCpuSetInformation
        GetFileInformationByName GetStagedPackagePathByFullName OpenPackageInfoByFullName
        """,
    "user32": """
        AdjustWindowRectExForDpi EnableNonClientDpiScaling GetDpiForSystem GetDpiForWindow GetSystemMetricsForDpi
        SystemParametersInfoForDpi GetThreadDpiAwarenessContext SetThreadDpiAwarenessContext
        GetWindowDpiAwarenessContext AreDpiAwarenessContextsEqual IsValidDpiAwarenessContext
        SetProcessDpiAwarenessContext GetDialogDpiChangeBehavior SetDialogDpiChangeBehavior
        LogicalToPhysicalPointForPerMonitorDPI PhysicalToLogicalPointForPerMonitorDPI
        GetPointerInfo GetPointerType GetPointerTouchInfo EnableMouseInPointer InjectTouchInput
        InitializeTouchInjection IsImmersiveProcess
        """,
    "ws2_32": "GetHostNameW GetAddrInfoExCancel GetAddrInfoExOverlappedResult ProcessSocketNotifications",
    "bcrypt": "BCryptKeyDerivation BCryptCreateMultiHash BCryptProcessMultiOperations BCryptHash",
    "advapi32": "EventSetInformation OperationStart OperationEnd",
    "ntdll": "RtlWaitOnAddress RtlWakeAddressAll RtlWakeAddressSingle RtlGetSystemTimePrecise",
}


def imports(path):
    """(DLL without extension in lower case, function) for each import of the file."""
    output = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", path], check=True, capture_output=True,
                            text=True, errors="replace").stdout
    dll = None
    for line in output.splitlines():
        if named := re.match(r"\s*DLL Name: (\S+)", line):
            dll = named.group(1).lower().removesuffix(".dll")
        elif not line.strip():
            dll = None
        elif dll and (entry := re.match(r"\s+[0-9a-f]+\s+(?:<none>|\d+)?\s*(?:[0-9a-f]{4}\s+)?(\S+)\s*$", line)):
            yield dll, entry.group(1)


def main():
    newer = {dll: set(names.split()) for dll, names in NEWER.items()}
    faults = []
    for path in sys.argv[1:]:
        count = 0
        for dll, function in imports(path):
            count += 1
            if dll not in DLLS:
                faults.append(f"{path}: needs {dll} (for {function}), which is not part of Windows 7 SP1")
            elif function in newer.get(dll, ()):
                faults.append(f"{path}: calls {function} of {dll}, which Windows 7 SP1 does not have")
        # Every program imports something; none means that the listing was not understood.
        if count == 0:
            faults.append(f"{path}: no imports found in objdump's listing")
    print("\n".join(sorted(set(faults))) or f"{len(sys.argv) - 1} files import only what Windows 7 SP1 has")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
