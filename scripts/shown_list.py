"""The list of songs that is to be seen in the documents' pictures."""
import desk

SONGS = [("Harbour Lights", "Slow Tide"), ("Ida Voss", "Paper Lanterns"),
         ("The Long Field", "Harvest Moon"), ("Ohm & Sons", "Static Garden"),
         ("Marsh Lights", "Copper Wire Waltz"), ("Ida Voss", "Winter Fair"),
         ("김하늘", "밤의 노래"), ("Northern Line", "Late Train Home"),
         ("Мария Волкова", "Тихий берег"), ("すずき", "うみのこえ"), ("Harbour Lights", "Ebb")]
SELECTED = (3, 4)


def write(folder, player_folder, songs=SONGS):
    """Writes songs into a folder, and their list as the player's; all are the demo song."""
    sound = (desk.ROOT / "music/one-horizon.mp3").read_bytes()[:-128]
    lines = "VERSION 10\r\n"
    for number, (artist, title) in enumerate(songs):
        path = folder / f"{number}.mp3"
        path.write_bytes(sound + b"TAG" + title.encode().ljust(30, b"\0") +
                         artist.encode().ljust(30, b"\0") + bytes(65))
        lines += f"ADD {path}\r\n" + ("SELECTED\r\n" if number in SELECTED else "")
    (player_folder / "HISTORY.PLA").write_text(lines, newline="")
