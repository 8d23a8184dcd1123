complete -c quillet -f
complete -c quillet -n __fish_use_subcommand -a watch -d 'Run the application'
complete -c quillet -n __fish_use_subcommand -a status -d 'Print the current usage'
complete -c quillet -n __fish_use_subcommand -a preview -d 'Draw the strip into a PNG file'
complete -c quillet -n __fish_use_subcommand -a panel -d 'Draw the panel into a PNG file'
complete -c quillet -n __fish_use_subcommand -a menubar -d 'Draw the menu-bar item into a PNG file'
complete -c quillet -n __fish_use_subcommand -a version -d 'Print the version'
complete -c quillet -n '__fish_seen_subcommand_from status' -l json -d 'Print a JSON array'
complete -c quillet -n '__fish_seen_subcommand_from preview panel menubar' \
    -l out -r -F -d 'Where to write'
