// placeholder filled below
