' A native object that the host calls through its description in a type
' library, kept by this client when the host has let go of it.
Dim proxy, com, typed, list, back
Set proxy = CreateObject("VelkCOMAdapter.VelkCOMProxy")
Set com = proxy.CreateObject("qxttools.comadapter")
' The dictionary of the system, for its dual interface.
Set typed = com.CreateObject("Scripting.Dictionary", _
    "{42C642C1-97E1-11CF-978F-00A02463E06F}", "C:\windows\system32\scrrun.dll")
Set com = Nothing
typed.Add "one", 1
Check "called when the host's wrapper is gone", 1, typed.Count

Set list = proxy.CreateObject("scripting.dictionary")
list.Add "typed", typed
Set typed = Nothing
Set back = list("typed")
list.RemoveAll
back.Add "two", 2
Check "kept by a host object, then by this client", 2, back.Count
Check "and what it holds", 1, back.Item("one")
Set list = Nothing
proxy.TerminateApplication
Set proxy = Nothing
back.RemoveAll
Check "kept when the application has ended", 0, back.Count
Set back = Nothing
