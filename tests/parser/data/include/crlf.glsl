first
second
