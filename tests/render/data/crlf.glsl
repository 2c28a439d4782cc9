first line
second line