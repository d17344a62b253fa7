# Makes the fixtures of this directory: data/*.csv and trees/*.txt, as README.md describes them.
#
#   Rscript make_fixtures.R [directory of credit.csv, diamonds.csv and penguins.csv]
#
# Without the directory, the data files of these three stay as they are here; everything else comes
# with R. Every tree is grown on its CSV file as read back, and every number of it is held against
# its definition (check_formulas.R) before it is written.

library(rpart)
source("check_formulas.R")

sources <- commandArgs(trailingOnly = TRUE)
dir.create("data", showWarnings = FALSE)
dir.create("trees", showWarnings = FALSE)

Sorted <- function(labels) sort(unique(labels), method = "radix")  # by bytes

# --- data -----------------------------------------------------------------------------------------

# Writes nominal columns as labels, ordered factors as 1, 2, ..., missing values as empty fields.
WriteData <- function(name, data) {
  fields <- vapply(data, function(column) {
    text <- if (is.ordered(column)) {
      as.character(as.integer(column))
    } else if (is.factor(column) || is.character(column)) {
      as.character(column)
    } else {
      trimws(formatC(column, digits = 15, format = "fg", width = 1))
    }
    text <- ifelse(is.na(column), "", text)
    ifelse(grepl("[,\"]", text), paste0('"', gsub('"', '""', text), '"'), text)
  }, character(nrow(data)))
  lines <- c(paste(names(data), collapse = ","), apply(fields, 1, paste, collapse = ","))
  file <- file(file.path("data", paste0(name, ".csv")), "wb")
  on.exit(close(file))
  writeLines(lines, file)
}

# Reads columns of it back; the `nominal` ones become factors with their labels sorted by bytes.
ReadData <- function(name, columns, nominal) {
  data <- read.csv(file.path("data", paste0(name, ".csv")), check.names = FALSE,
                   na.strings = "", colClasses = "character")
  data <- data[columns]
  for (column in columns) {
    data[[column]] <- if (column %in% nominal) {
      factor(data[[column]], levels = Sorted(data[[column]][!is.na(data[[column]])]))
    } else {
      as.numeric(data[[column]])
    }
  }
  data
}

Shared <- function(name) {
  read.csv(file.path(sources[1], paste0(name, ".csv")), stringsAsFactors = TRUE)
}

# Weights that no statistician chose: eighths from 1/8 to 13/8, in no order.
Eighths <- function(n) (1 + (7 * seq_len(n)) %% 13) / 8

MakeData <- function() {
  WriteData("iris", iris)
  WriteData("kyphosis", kyphosis)
  stage <- stagec
  stage$pgstat <- ifelse(stage$pgstat == 1, "progressed", "free")
  stage$weight <- Eighths(nrow(stage))
  WriteData("stagec", stage)
  WriteData("cu_summary", cu.summary)
  WriteData("car_test_frame", car.test.frame)
  cars <- car90
  cars$Model2 <- NULL  # its labels include the empty one
  for (column in c("Trans1", "Trans2")) {
    levels(cars[[column]])[levels(cars[[column]]) == ""] <- "none"
  }
  WriteData("car90", cars)
  WriteData("solder", solder.balance)
  WriteData("airquality", data.frame(airquality, weight = Eighths(nrow(airquality))))
  people <- as.data.frame(Titanic, stringsAsFactors = TRUE)
  WriteData("titanic_cells", people[people$Freq > 0, ])
  WriteData("titanic_people", people[rep(seq_len(nrow(people)), people$Freq), 1:4])
  groups <- esoph
  groups$persons <- groups$ncases + groups$ncontrols
  groups$share <- groups$ncases / groups$persons
  WriteData("esoph", groups[c("agegp", "alcgp", "tobgp", "persons", "share")])
  births <- infert
  births$case <- ifelse(births$case == 1, "case", "control")
  births$weight <- Eighths(nrow(births))
  WriteData("infert", births[c("case", "education", "age", "parity", "induced", "spontaneous",
                               "weight")])
  WriteData("attenu", attenu)
  seats <- data.frame(
    killed = cut(Seatbelts[, "VanKilled"], c(-Inf, 6, 11, Inf), c("few", "some", "many")),
    month = month.abb[cycle(Seatbelts)],
    unclass(Seatbelts)[, c("drivers", "front", "rear", "kms", "PetrolPrice", "law")])
  seats$law <- ifelse(seats$law == 1, "yes", "no")
  WriteData("seatbelts", seats)
  if (length(sources) == 1) {
    WriteData("penguins", Shared("penguins"))
    credit <- Shared("credit")
    WriteData("credit", credit[seq(1, nrow(credit), by = 4), ])
    diamonds <- Shared("diamonds")
    ranks <- list(cut = c("Fair", "Good", "Very Good", "Premium", "Ideal"),
                  color = c("D", "E", "F", "G", "H", "I", "J"),
                  clarity = c("I1", "SI2", "SI1", "VS2", "VS1", "VVS2", "VVS1", "IF"))
    for (column in names(ranks)) {
      diamonds[[column]] <- factor(diamonds[[column]], ranks[[column]], ordered = TRUE)
    }
    WriteData("diamonds", diamonds[seq(1, nrow(diamonds), by = 40), ])
  }
}

# --- cases ----------------------------------------------------------------------------------------

# One tree. `predictors`: their levels, named, in the order in which ties are broken. `prior`: by
# class label. `loss`: rows the observed class, columns the predicted, in order of labels.
# `weights`: the column of case weights; `whole`: whether they count repeated cases.
Case <- function(name, data, target, predictors, ..., prior = NULL, loss = NULL, weights = NULL,
                 whole = FALSE, method = "class", minsplit = 20, minbucket = round(minsplit / 3),
                 cp = 0, maxdepth = 30, maxcompete = 4, maxsurrogate = 5) {
  list(name = name, data = data, target = target, levels = predictors,
       predictors = names(predictors), prior = prior, loss = loss, weights = weights, whole = whole,
       method = method,
       control = list(minsplit = minsplit, minbucket = minbucket, cp = cp, maxdepth = maxdepth,
                      maxcompete = maxcompete, maxsurrogate = maxsurrogate))
}

Levels <- function(names, level) setNames(rep(level, length(names)), names)
Continuous <- function(...) Levels(c(...), "continuous")
Ordinal <- function(...) Levels(c(...), "ordinal")
Nominal <- function(...) Levels(c(...), "nominal")
Loss <- function(...) {
  entries <- c(...)
  matrix(entries, sqrt(length(entries)), byrow = TRUE)
}

flowers <- Continuous("Sepal.Length", "Sepal.Width", "Petal.Length", "Petal.Width")
spine <- Continuous("Age", "Number", "Start")
prostate <- c(Continuous("age", "eet", "g2", "grade", "gleason"), Nominal("ploidy"))
cars <- c(Nominal("Country"), Continuous("Disp", "Disp2", "Eng.Rev", "Front.Hd", "Frt.Leg.Room",
          "Frt.Shld", "Gear.Ratio", "Gear2", "HP", "HP.revs", "Height", "Length", "Luggage",
          "Mileage", "Rear.Hd", "Rear.Seating", "RearShld"), Ordinal("Reliability"),
          Nominal("Rim"), Continuous("Sratio.m", "Sratio.p"), Nominal("Steering"),
          Continuous("Tank"), Nominal("Tires", "Trans1", "Trans2"), Continuous("Turning"),
          Nominal("Type"), Continuous("Weight", "Wheel.base", "Width"))
air <- c(Continuous("Solar.R", "Wind", "Temp"), Ordinal("Month"), Continuous("Day"))
boards <- c(Nominal("Opening", "Solder", "Mask", "PadType"), Continuous("Panel"))
birds <- c(Nominal("island"), Continuous("bill_length_mm", "bill_depth_mm", "flipper_length_mm",
                                         "body_mass_g"), Nominal("sex"), Continuous("year"))
loans <- c(Continuous("Seniority"), Nominal("Home"), Continuous("Time", "Age"),
           Nominal("Marital", "Records", "Job"),
           Continuous("Expenses", "Income", "Assets", "Debt", "Amount", "Price"))
births <- c(Nominal("education"), Continuous("age", "parity", "induced", "spontaneous"))
passengers <- Nominal("Class", "Sex", "Age")

cases <- list(
  Case("iris", "iris", "Species", flowers, minsplit = 6, minbucket = 2, maxcompete = 3),
  Case("iris_costs", "iris", "Species", flowers, minsplit = 10, minbucket = 3,
       loss = Loss(0, 1, 2, 1, 0, 5, 1, 2, 0), prior = c(setosa = 0.2, versicolor = 0.5,
                                                         virginica = 0.3)),
  Case("kyphosis", "kyphosis", "Kyphosis", spine, minsplit = 10, minbucket = 3, cp = -1),
  Case("kyphosis_priors", "kyphosis", "Kyphosis", spine, prior = c(absent = 0.65, present = 0.35),
       minsplit = 20, cp = 0.01),
  Case("kyphosis_costs", "kyphosis", "Kyphosis", spine, loss = Loss(0, 1, 3, 0), minsplit = 15),
  Case("stagec", "stagec", "pgstat", prostate, minsplit = 16, minbucket = 8, cp = -1),
  Case("stagec_priors_costs", "stagec", "pgstat", prostate, prior = c(free = 0.7, progressed = 0.3),
       loss = Loss(0, 1.5, 2, 0), minsplit = 20, cp = 0.005, maxcompete = 2, maxsurrogate = 3),
  Case("stagec_weights", "stagec", "pgstat", prostate, weights = "weight", minsplit = 20, cp = -1),
  Case("cu_summary_mileage", "cu_summary", "Mileage", method = "anova",
       c(Continuous("Price"), Nominal("Country"), Ordinal("Reliability"), Nominal("Type")),
       minsplit = 10, minbucket = 3),
  Case("cu_summary_type", "cu_summary", "Type",
       c(Nominal("Country"), Ordinal("Reliability"), Continuous("Mileage")), minsplit = 8,
       minbucket = 4),
  Case("cu_summary_type_price", "cu_summary", "Type",
       c(Continuous("Price"), Nominal("Country"), Ordinal("Reliability")), minsplit = 12),
  Case("car_test_frame", "car_test_frame", "Mileage", method = "anova",
       c(Continuous("Price"), Nominal("Country"), Ordinal("Reliability"), Nominal("Type"),
         Continuous("Weight", "Disp.", "HP")), minsplit = 8, minbucket = 3, maxdepth = 4),
  Case("car90", "car90", "Price", cars, method = "anova", minsplit = 12, minbucket = 5,
       maxcompete = 6, maxsurrogate = 8),
  Case("car90_type", "car90", "Type", c(cars[names(cars) != "Tires" & names(cars) != "Type"],
                                        Continuous("Price")),
       prior = c(Compact = 0.25, Large = 0.125, Medium = 0.125, Small = 0.25, Sporty = 0.125,
                 Van = 0.125), minsplit = 10, minbucket = 4, maxcompete = 3, maxsurrogate = 4),
  Case("solder", "solder", "skips", boards, method = "anova", cp = 0.001),
  Case("solder_panel", "solder", "Mask",
       c(Nominal("Opening", "Solder", "PadType"), Continuous("Panel", "skips")), maxdepth = 6,
       minsplit = 40, minbucket = 15),
  Case("airquality", "airquality", "Ozone", air, method = "anova", minsplit = 10, minbucket = 4),
  Case("airquality_weights", "airquality", "Ozone", air, method = "anova", weights = "weight",
       minsplit = 14, minbucket = 5, maxcompete = 2, maxsurrogate = 3),
  Case("penguins", "penguins", "species", birds, minsplit = 12, minbucket = 6),
  Case("penguins_costs", "penguins", "species", birds, minsplit = 8, minbucket = 4,
       maxsurrogate = 3, prior = c(Adelie = 0.4, Chinstrap = 0.3, Gentoo = 0.3),
       loss = Loss(0, 1, 2, 4, 0, 2, 1, 3, 0)),
  Case("penguins_sex_priors", "penguins", "sex",
       c(Nominal("species", "island"), birds[2:5], Continuous("year")),
       prior = c(female = 0.25, male = 0.75), minsplit = 12, minbucket = 4,
       cp = -1),
  Case("credit", "credit", "Status", loans, minsplit = 60, minbucket = 20, maxdepth = 8),
  Case("credit_costs", "credit", "Status", loans, loss = Loss(0, 4, 1, 0), minsplit = 50,
       minbucket = 20, cp = 0.002),
  Case("diamonds", "diamonds", "price", method = "anova",
       c(Continuous("carat"), Ordinal("cut", "color", "clarity"),
         Continuous("depth", "table", "x", "y", "z")), minsplit = 30, minbucket = 10, cp = 0.0005),
  Case("titanic_cells", "titanic_cells", "Survived", passengers, weights = "Freq", whole = TRUE,
       minsplit = 2, minbucket = 1),
  Case("titanic_people", "titanic_people", "Survived", passengers, minsplit = 2, minbucket = 1),
  Case("esoph", "esoph", "share", Ordinal("agegp", "alcgp", "tobgp"), method = "anova",
       weights = "persons", whole = TRUE, minsplit = 8, minbucket = 3),
  Case("infert_weights", "infert", "case", births, weights = "weight", minsplit = 16,
       minbucket = 6),
  Case("infert_weights_priors_costs", "infert", "case", births, weights = "weight",
       prior = c(case = 0.4, control = 0.6), loss = Loss(0, 2, 1, 0), minsplit = 16,
       minbucket = 6),
  Case("attenu", "attenu", "accel", method = "anova",
       c(Nominal("event"), Continuous("mag"), Nominal("station"), Continuous("dist")),
       minsplit = 20, minbucket = 7, cp = 0.001),
  Case("seatbelts", "seatbelts", "killed",
       c(Nominal("month"), Continuous("drivers", "front", "rear", "kms", "PetrolPrice"),
         Nominal("law")), minsplit = 20, minbucket = 7))

# --- growing --------------------------------------------------------------------------------------

Grow <- function(case, data) {
  parms <- NULL
  if (case$method == "class") {
    parms <- list(split = "gini")
    if (!is.null(case$prior)) parms$prior <- unname(case$prior)
    if (!is.null(case$loss)) parms$loss <- case$loss
  }
  control <- do.call(rpart.control, c(case$control, list(
    xval = 0, usesurrogate = 2, surrogatestyle = 0)))
  formula <- reformulate(paste0("`", case$predictors, "`"), case$target)
  call <- list(formula, data = data, method = case$method, control = control,
               na.action = na.pass)
  if (!is.null(parms)) call$parms <- parms
  if (!is.null(case$weights)) call$weights <- data[[case$weights]]
  fit <- do.call(rpart, call)
  rownames(fit$splits) <- gsub("`", "", rownames(fit$splits))
  fit$frame$var <- gsub("`", "", fit$frame$var)
  fit
}

# --- writing --------------------------------------------------------------------------------------

Number <- function(x) sprintf("%.17g", x)
Count <- function(x) sprintf("%.0f", x)

# Where a split sends what, as fields.
Ways <- function(split) {
  if (is.null(split$cut)) {
    c("sets", length(split$left), split$left, length(split$right), split$right)
  } else {
    c("cut", Number(split$cut), if (!is.null(split$lowerGoesLeft))
      if (split$lowerGoesLeft) "left" else "right")
  }
}

WriteTree <- function(case, data, counts, fit, checked) {
  lines <- character()
  Line <- function(...) lines[length(lines) + 1] <<- paste(c(...), collapse = "\t")
  Line("rpart-tree", 1)
  Line("name", case$name)
  Line("data", paste0(case$data, ".csv"), length(counts), nrow(data))
  Line("target", case$target, if (case$method == "class") "nominal" else "continuous")
  for (predictor in case$predictors) {
    level <- case$levels[[predictor]]
    labels <- if (level == "nominal") c(nlevels(data[[predictor]]), levels(data[[predictor]]))
    Line("predictor", predictor, level, sum(is.na(data[[predictor]])), labels)
  }
  if (!is.null(case$weights)) {
    Line("weights", case$weights, if (case$whole) "whole" else "real")
  }
  if (case$method == "class") {
    weights <- if (is.null(case$weights)) rep(1, nrow(data)) else data[[case$weights]]
    of <- ClassWeights(case, data[[case$target]], weights)
    for (i in seq_along(case$classes)) {
      Line("class", case$classes[i], Number(of$prior[i]), Number(of$altered[i]),
           if (is.null(case$prior)) "observed" else "given")
    }
    if (!is.null(case$loss)) {
      # by predicted class; rpart's rows are observed classes
      for (i in seq_along(case$classes)) Line("cost", case$classes[i], Number(case$loss[, i]))
    }
  }
  for (setting in names(case$control)) Line("setting", setting, Number(case$control[[setting]]))
  frame <- fit$frame
  for (node in checked$nodes) {
    i <- node$row
    k <- length(case$classes)
    Line("node", Count(node$number), Count(frame$n[i]), Number(frame$wt[i]), Number(frame$dev[i]),
         Number(frame$complexity[i]), if (is.null(node$primaries)) "terminal" else "split")
    if (case$method == "class") {
      Line("predicts", case$classes[frame$yval[i]], Number(frame$yval2[i, 2 + 2 * k]))
      Line("weights_by_class", Number(frame$yval2[i, 1 + seq_len(k)]))
      Line("shares", Number(frame$yval2[i, 1 + k + seq_len(k)]))
    } else {
      Line("predicts", Number(frame$yval[i]))
    }
    for (at in seq_along(node$primaries)) {
      split <- node$primaries[[at]]
      Line(if (at == 1) "primary" else "competitor", split$name, Count(split$count),
           Number(split$improve), Ways(split))
      for (tie in split$ties) {
        if (!is.null(tie$cut)) tie$lowerGoesLeft <- split$lowerGoesLeft
        Line("tie", Ways(tie))
      }
    }
    for (split in node$surrogates) {
      Line("surrogate", split$name, Count(split$count), Number(split$improve), Number(split$adj),
           Ways(split))
      for (tie in split$ties) Line("tie", Ways(tie))
    }
    if (!is.null(node$moved)) Line("by_definition", length(node$plain), node$moved)
    for (split in node$plain) {
      Line("defined", split$name, Number(split$agree), Number(split$adj), Ways(split))
    }
    if (!is.null(node$default)) Line("default", node$default)
  }
  for (i in seq_len(nrow(fit$cptable))) {
    Line("subtree", Number(fit$cptable[i, "CP"]), Count(fit$cptable[i, "nsplit"]),
         Number(fit$cptable[i, "rel error"]))
  }
  links <- checked$weakestLinks
  for (i in seq_len(nrow(links))) {
    Line("weakest", Number(links$cp[i]), Count(links$splits[i]), Number(links$risk[i]))
  }
  terminal <- rep("0", length(counts))
  terminal[counts] <- row.names(frame)[fit$where]
  for (start in seq(1, length(terminal), by = 20)) {
    Line("terminal", terminal[start:min(start + 19, length(terminal))])
  }
  Line("end")
  file <- file(file.path("trees", paste0(case$name, ".txt")), "wb")
  on.exit(close(file))
  writeLines(lines, file)
}

# --- all of it ------------------------------------------------------------------------------------

MakeData()
overall <- Seen()
for (case in cases) {
  labels <- case$predictors[case$levels == "nominal"]
  data <- ReadData(case$data, c(case$target, case$predictors, case$weights),
                   c(labels, if (case$method == "class") case$target))
  counts <- !is.na(data[[case$target]])  # a case without a target is left out
  data <- data[counts, ]
  if (case$method == "class") case$classes <- levels(data[[case$target]])
  fit <- Grow(case, data)
  seen <- Seen()
  checked <- Check(fit, case, data, seen)
  if (case$control$cp > -1) {
    whole <- case
    whole$control$cp <- -1
    CheckStopping(fit, Grow(whole, data), case)
  }
  WriteTree(case, data, counts, fit, checked)
  for (what in ls(seen)) {
    assign(what, get(what, overall) + get(what, seen), envir = overall)
  }
  counted <- unlist(mget(ls(seen), seen))
  cat(case$name, ":", paste(names(counted), counted)[counted > 0], "\n")
}
cat("\nall:\n")
for (what in ls(overall)) cat(" ", what, get(what, overall), "\n")
