' A late-bound client in VBScript: the host's dictionary, through the proxy.
Dim proxy, words, unknown
Set proxy = CreateObject("VelkCOMAdapter.VelkCOMProxy")
proxy.InitApplication "script client", "1.0"
Set words = proxy.CreateObject("scripting.dictionary")

Check "a new dictionary is empty", 0, words.Count
words.Add "the", 1
words.Add "of", 2.5
Check "Count after two Add", 2, words.Count
Check "Item of an integer", 1, words.Item("the")
Check "Item of a floating point number", 2.5, words.Item("of")
Check "Exists of a key", True, CBool(words.Exists("the"))
Check "Exists of no key", False, CBool(words.Exists("and"))

words.Item("the") = "text"
Check "a put through Item", "text", words.Item("the")
words("the") = 7
Check "a put through the default member", 7, words("the")
words("the") = words("the") + 1
Check "counting up", 8, words("the")

words.Remove "of"
Check "Count after Remove", 1, words.Count

Dim nested
Set nested = proxy.CreateObject("scripting.dictionary")
nested.Add "inner", "value"
words.Add "nested", nested
Check "a member of an object in the dictionary", "value", words.Item("nested").Item("inner")

On Error Resume Next
words.NoSuchMember
Check "an unknown member fails", True, Err.Number <> 0
Err.Clear
words.Add "the", 1
Check "adding a key twice fails", True, Err.Number <> 0 Or Err.Description <> ""
Err.Clear
On Error Goto 0
Check "Count after the failures", 2, words.Count

Set nested = Nothing
Set words = Nothing
proxy.TerminateApplication
Set proxy = Nothing
