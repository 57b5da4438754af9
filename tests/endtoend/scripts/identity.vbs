' Objects that cross the bridge: a host object comes back as itself, whichever
' way it took, and lives as long as anybody holds it.
Dim proxy, outer, inner, back, keys
Set proxy = CreateObject("VelkCOMAdapter.VelkCOMProxy")
Set outer = proxy.CreateObject("scripting.dictionary")
Set inner = proxy.CreateObject("scripting.dictionary")
inner.Add "count", 1
outer.Add "inner", inner

Set back = outer.Item("inner")
back.Add "through the way back", 2
Check "the object behind both", 2, inner.Count
Set outer.Item("same") = back
outer("same").Add "through a put", 3
Check "the object behind all", 3, inner.Count

Set inner = Nothing
Set back = Nothing
Check "the dictionary holds its object", 3, outer("inner").Count
outer.Remove "inner"
Check "under the other key too", 3, outer("same").Count

Set keys = outer.Keys
Check "a list of the host", 1, keys.Count
Check "and what is in it", "same", keys.Item(0)

outer.Add "itself", outer
Check "an object that holds itself", 2, outer("itself")("itself").Count
outer.RemoveAll
Check "and lets itself go", 0, outer.Count
proxy.TerminateApplication
