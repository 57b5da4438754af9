' Counts the words of a text in a dictionary of the host, as the program
' beside it does, and prints the ten most frequent ones with their counts.
'
'   cscript //nologo wordcount.vbs FILE
'
' A word is a run of the letters A to Z, without regard to case. Words that
' are as frequent come in the order of the alphabet.
Option Explicit
Const forReading = 1
Const shown = 10
Dim proxy, words
Set proxy = CreateObject("VelkCOMAdapter.VelkCOMProxy")
proxy.InitApplication "wordcount", "1.0"
Set words = proxy.CreateObject("scripting.dictionary")

CountWords ReadText(WScript.Arguments(0))
PrintMostFrequent

Set words = Nothing
proxy.TerminateApplication

Function ReadText(path)
    Dim stream
    Set stream = CreateObject("Scripting.FileSystemObject").OpenTextFile(path, forReading)
    ReadText = ""
    If Not stream.AtEndOfStream Then ReadText = stream.ReadAll
    stream.Close
End Function

Sub CountWords(text)
    Dim position, code, start
    text = LCase(text) & " "
    start = 0
    For position = 1 To Len(text)
        code = Asc(Mid(text, position, 1))
        If code >= 97 And code <= 122 Then
            If start = 0 Then start = position
        ElseIf start > 0 Then
            CountWord Mid(text, start, position - start)
            start = 0
        End If
    Next
End Sub

Sub CountWord(word)
    If words.Exists(word) Then
        words(word) = words(word) + 1
    Else
        words.Add word, 1
    End If
End Sub

Sub PrintMostFrequent
    Dim found, total, keys, counts, index, line, best
    total = words.Count
    If total = 0 Then Exit Sub
    ReDim keys(total - 1)
    ReDim counts(total - 1)
    Set found = words.Keys
    For index = 0 To total - 1
        keys(index) = found.Item(index)
        counts(index) = words(keys(index))
    Next
    For line = 1 To shown
        best = -1
        For index = 0 To total - 1
            If counts(index) > 0 Then
                If best < 0 Then
                    best = index
                ElseIf counts(index) > counts(best) Then
                    best = index
                ElseIf counts(index) = counts(best) And keys(index) < keys(best) Then
                    best = index
                End If
            End If
        Next
        If best < 0 Then Exit Sub
        WScript.Echo counts(best) & " " & keys(best)
        counts(best) = 0
    Next
End Sub
