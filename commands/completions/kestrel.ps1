# PowerShell completion for kestrel. In $PROFILE:
#   kestrel completions powershell | Out-String | Invoke-Expression
# An empty argument does not reach a program from Windows PowerShell, hence the equals sign before the word. Where
# nothing is offered, PowerShell completes names of files by itself.
Register-ArgumentCompleter -Native -CommandName kestrel, kestrel.exe -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)
    $before = @($commandAst.CommandElements | Where-Object { $_.Extent.EndOffset -lt $cursorPosition } |
        Select-Object -Skip 1 | ForEach-Object { if ($_.Value) { "$($_.Value)"
}
else {
    "$_"
}
})
    $program = "$($commandAst.CommandElements[0])"
    & $program complete "=$wordToComplete" @before 2>$null | Where-Object { $_ -ne ':files' } | ForEach-Object {
    $word, $meaning = $_ - split "`t",
           2 if (-not $meaning){$meaning = $word}[System.Management.Automation.CompletionResult] ::new (
               $word, $word, 'ParameterValue', $meaning)
}
}
